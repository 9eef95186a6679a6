#include "BashCompletion.hpp"

#include "HelpText.hpp"

namespace tavrin::app
{

namespace
{

/// The part that does not depend on commands and algorithms. bash splits words at "=" outside of
/// quotes and replaces only the last piece.
constexpr const char* machinery = R"(
# Prints those of the candidates on standard input that begin with $1, one per line.
_tavrin_beginning()
{
    local line
    while IFS= read -r line; do
        [[ $line == "$1"* ]] && printf '%s\n' "$line"
    done
}

# Removes quotes and backslashes from a word.
_tavrin_plain()
{
    local word=${1#[\"\']}
    word=${word%[\"\']}
    printf '%s' "${word//\\/}"
}

_tavrin()
{
    local i word command= algorithm= skip= quote= name= value= prefix= candidates=
    local current=${COMP_WORDS[COMP_CWORD]} previous=${COMP_WORDS[COMP_CWORD-1]}
    COMPREPLY=()
    [[ $current == [\"\']* ]] && quote=${current:0:1}

    for ((i = 1; i < COMP_CWORD; ++i)); do
        word=${COMP_WORDS[i]}
        if [[ -n $skip ]]; then
            skip=
        elif _tavrin_takes_value "$word"; then
            skip=1
        elif [[ $word == -* || $word == = || ${COMP_WORDS[i+1]} == = ]]; then
            :
        elif [[ -z $command ]]; then
            command=$word
        elif [[ -z $algorithm ]]; then
            algorithm=$(_tavrin_plain "$word")
        fi
    done

    # NAME=VALUE: "prefix" is the part of NAME= that the candidates repeat.
    if [[ $current == = ]]; then
        name=$(_tavrin_plain "$previous") value=
        current=
    elif [[ $previous == = ]]; then
        name=$(_tavrin_plain "${COMP_WORDS[COMP_CWORD-2]}")
        value=$(_tavrin_plain "$current")
    else
        value=$(_tavrin_plain "$current")
        if [[ $value == *=* ]]; then
            name=${value%%=*}
            prefix=$name=
            value=${value#*=}
        fi
    fi

    local files=
    if [[ -n $skip && -z $name ]]; then
        case $previous in
        --progress) candidates=$'auto\nalways\nnever' ;;
        -o | --output) candidates=$(_tavrin_outputs "$algorithm") files=1 ;;
        --threads) ;;
        *) files=1 ;;
        esac
    elif [[ -n $name ]]; then
        candidates=$(_tavrin_values "$algorithm" "$name")
        if [[ -z $candidates ]] || _tavrin_takes_data "$algorithm" "$name"; then
            files=1
        fi
    elif [[ $value == -* ]]; then
        candidates=$(_tavrin_flags "$command")
    elif [[ -z $command ]]; then
        candidates=$(_tavrin_commands)
    else
        case $command in
        run | describe)
            if [[ -z $algorithm ]]; then
                candidates=$(_tavrin_algorithms)
            else
                candidates=$(_tavrin_options "$algorithm")
            fi
            ;;
        help) candidates=$(_tavrin_commands) ;;
        completion) candidates=bash ;;
        *) files=1 ;;
        esac
    fi

    while IFS= read -r word; do
        [[ -n $word ]] && COMPREPLY+=("$prefix$word")
    done < <(
        [[ -n $candidates ]] && _tavrin_beginning "$value" <<<"$candidates"
        [[ -n $files ]] && compgen -f -- "$value" | while IFS= read -r word; do
            [[ -d $word ]] && word+=/
            printf '%s\n' "$word"
        done
    )
    if [[ ${#COMPREPLY[@]} == 1 && ${COMPREPLY[0]} == *[=/] ]]; then
        compopt -o nospace 2>/dev/null
        # A single candidate would close the quotes.
        [[ -n $quote ]] && COMPREPLY+=("${COMPREPLY[0]} ")
    fi
    if [[ -z $quote ]]; then
        for i in "${!COMPREPLY[@]}"; do
            word=${COMPREPLY[i]}
            if [[ $word == *= ]]; then
                printf -v word '%q=' "${word%=}"
            else
                printf -v word '%q' "$word"
            fi
            COMPREPLY[i]=$word
        done
    fi
}
complete -F _tavrin tavrin
)";

std::string quoted(const std::string& text)
{
    std::string word = "'";
    for (const char c : text)
        word += c == '\'' ? std::string("'\\''") : std::string(1, c);
    return word + "'";
}

/// A shell command that prints the texts, one per line.
std::string printing(const std::vector<std::string>& texts)
{
    if (texts.empty())
        return ":";
    std::string command = "printf '%s\\n'";
    for (const std::string& text : texts)
        command += ' ' + quoted(text);
    return command;
}

/// One branch of a `case` statement.
std::string branch(const std::string& pattern, const std::string& command)
{
    return "    " + pattern + ") " + command + " ;;\n";
}

std::string function(const std::string& name, const std::string& body)
{
    return name + "()\n{\n" + body + "}\n";
}

std::string selection(const std::string& subject, const std::string& branches)
{
    return "    case " + subject + " in\n" + branches + "    *) false ;;\n    esac\n";
}

std::vector<std::string> optionNames(const CLI::App& syntax)
{
    std::vector<std::string> names;
    for (const OptionText& option : optionTexts(syntax))
        names.push_back(option.names.back());
    return names;
}

/// The values to offer besides files: choices and built-in references. Empty for free values.
std::vector<std::string> valuesOf(const AlgorithmDescription::Option& option,
                                  const pipeline::DataInput* data)
{
    if (option.kind == InputKind::Boolean)
        return {"true", "false"};
    std::vector<std::string> values = option.choices;
    if (data != nullptr)
        for (const pipeline::DataKind* const kind : data->kinds)
            values.insert(values.end(), kind->offers.begin(), kind->offers.end());
    return values;
}

std::string commandFunctions(const ProgramDeclaration& program)
{
    std::vector<std::string> commands;
    std::string flags;
    std::string takingValue;
    const auto addTakingValue = [&](const CLI::App& syntax)
    {
        for (const OptionText& option : optionTexts(syntax))
            if (!option.value.empty())
                for (const std::string& name : option.names)
                    takingValue += (takingValue.empty() ? "" : " | ") + name;
    };
    const std::vector<std::string> global = optionNames(program.syntax);
    addTakingValue(program.syntax);
    for (const CommandDeclaration& command : program.commands)
    {
        commands.push_back(command.text.name);
        std::vector<std::string> names = optionNames(command.syntax);
        names.insert(names.end(), global.begin(), global.end());
        flags += branch(command.text.name, printing(names));
        addTakingValue(command.syntax);
    }
    flags += branch("''", printing(global));
    return function("_tavrin_commands", "    " + printing(commands) + '\n') +
           function("_tavrin_flags", selection("$1", flags)) +
           function("_tavrin_takes_value", selection("$1", branch(takingValue, "true")));
}

std::string algorithmFunctions(const std::vector<pipeline::AlgorithmCard>& algorithms)
{
    std::vector<std::string> names;
    std::string options;
    std::string outputs;
    std::string values;
    std::string dataOptions;
    for (const pipeline::AlgorithmCard& algorithm : algorithms)
    {
        names.push_back(algorithm.name);
        std::vector<std::string> words;
        for (const auto& option : algorithm.options)
        {
            if (option.kind != InputKind::Label)
                words.push_back(option.name + '=');
            const pipeline::DataInput* const data = algorithm.dataInput(option);
            const auto offers = valuesOf(option, data);
            const std::string pattern = quoted(algorithm.name + '|' + option.name);
            if (!offers.empty())
                values += branch(pattern, printing(offers));
            if (data != nullptr)
                dataOptions += branch(pattern, "true");
        }
        options += branch(quoted(algorithm.name), printing(words));
        words.clear();
        for (const auto& output : algorithm.outputs)
            words.push_back(output.name + '=');
        outputs += branch(quoted(algorithm.name), printing(words));
    }
    return function("_tavrin_algorithms", "    " + printing(names) + '\n') +
           function("_tavrin_options", selection("$1", options)) +
           function("_tavrin_outputs", selection("$1", outputs)) +
           function("_tavrin_values", selection("\"$1|$2\"", values)) +
           function("_tavrin_takes_data", selection("\"$1|$2\"", dataOptions));
}

}

std::string bashCompletion(const ProgramDeclaration& program,
                           const std::vector<pipeline::AlgorithmCard>& algorithms)
{
    return "# Completion of tavrin for bash, made by \"tavrin completion bash\".\n" +
           commandFunctions(program) + algorithmFunctions(algorithms) + machinery;
}

}
