#pragma once

#include <tavrin/algorithm/Input.hpp>
#include <tavrin/colormap/ColorMapReference.hpp>
#include <tavrin/io/Loader.hpp>

#include <span>
#include <variant>

// The kinds of data object that a front end can make from text, one row of a table for each. All
// that help, messages and completion say about data options, and all that a run does with them,
// follows from this table: a new kind is a new row in DataKinds.cpp.
//
// An option may accept several kinds. A reference to a file is then taken
// - as a color map where it names a built-in map or a .json file;
// - as a function where it has "#ARRAY" or a key that concerns an array ("on" or "shape");
// - otherwise as a grid where the option accepts grids, and as a function where it does not.
// An option that accepts any data object accepts every kind. In a bundle option all of this holds
// for the members, and each member of a multi-block file becomes a member of the bundle.

namespace tavrin::pipeline
{

/// What an object is made with, apart from the reference to it.
struct DataSources
{
    io::Loader& loader;
    /// What was made before, in order.
    const DataObjectBundle::Members& earlier;
};

/// A kind of data object: a row of the table.
struct TAVRIN_API DataKind
{
    using Object = std::shared_ptr<const DataObject>;
    using Objects = DataObjectBundle::Members;
    using Reference = std::variant<io::DataReference, ColorMapReference>;
    /// Whether an option takes an object.
    using IsAccepted = std::function<bool(const Object& object)>;

    /// The base class of all objects of the kind.
    RTTI_TypeId type;
    /// What a person calls it, without an article.
    const char* name;
    /// What stands for a reference in help: "FILE#ARRAY".
    const char* placeholder;
    /// References that are always there, for completion: the built-in color maps.
    std::vector<std::string> offers;
    /// Whether objects of other kinds may be needed to make one, which are therefore made first.
    bool dependsOnOthers;

    /// Parses a text that refers to an object. Throws `usage_error` for one that cannot.
    Reference (*parse)(const std::string& text);

    /// The files that are read for a reference.
    std::vector<std::filesystem::path> (*files)(const Reference& reference);

    /// Makes the objects of a reference, each a member where the option takes a bundle and otherwise
    /// exactly one. Throws what `io::Loader` and `ColorMapReference` throw.
    Objects (*make)(const Reference& reference, const DataSources& sources, InputKind option,
                    const IsAccepted& isAccepted);
};

/// A reference in text with its kind, parsed once.
struct TAVRIN_API ObjectReference
{
    const DataKind* kind;
    DataKind::Reference parsed;

    /// Parses a text for a data or bundle option. Throws `usage_error` for a malformed text and for
    /// an option that accepts no kind of the table.
    static ObjectReference parse(const std::string& text, const InputBase& input);

    std::vector<std::filesystem::path> files() const { return kind->files(parsed); }
};

/// Whether an option takes data, alone or as a bundle.
inline bool takesData(const InputBase& input)
{
    return input.kind() == InputKind::Data || input.kind() == InputKind::Bundle;
}

/// The kinds that a data or bundle option accepts, in the order of the table; none for any other
/// option.
TAVRIN_API std::vector<const DataKind*> kindsOf(const InputBase& input);

/// What stands for a value of the option in help: "FILE or FILE#ARRAY"; "OBJECT" for a class that no
/// kind of the table is of, and empty for an option that takes no data.
TAVRIN_API std::string placeholderOf(const InputBase& input);

}
