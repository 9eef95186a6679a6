#pragma once

#include <tavrin/pipeline/ConstantFunction.hpp>
#include <tavrin/pipeline/MadeGrids.hpp>

#include <tavrin/algorithm/Input.hpp>
#include <tavrin/colormap/ColorMapReference.hpp>
#include <tavrin/io/Loader.hpp>

#include <span>
#include <variant>

// The kinds of data object that a front end can make from text, one row of a table for each. Help,
// messages, completion and runs all use this table: a new kind is a new row in DataKinds.cpp.
//
// An option may accept several kinds. A reference is then taken
// - as a grid if it describes one, as in "@box:10x10", and as a function for "@constant:1";
// - as a color map if it names a built-in map or a .json file;
// - as a function if it has "#ARRAY" or a key that selects an array ("on" or "shape");
// - otherwise as a grid if the option accepts grids, and as a function if it does not.
// An option that accepts any data object takes a color map by the first rule, a grid if the file has
// no arrays, and otherwise a function. In a bundle option the same rules hold for each member, and
// every block of a multi-block file becomes a member, unless the members are fields: all blocks are
// one field.

namespace tavrin::pipeline
{

/// What a color map spans if its reference has no range: the norms of the first function among the
/// objects made so far, or 0 to 1 without a function.
struct ShownNorms
{
    /// In place of the norms of a function, where they are known.
    std::optional<ValueRange> range = std::nullopt;
    /// The time at which the function is shown; without it all its time steps count.
    std::optional<double> time = std::nullopt;
};

/// The range of the finite norms of the first function among the objects, at a time or at all its
/// time steps; nothing without such a function.
TAVRIN_API std::optional<ValueRange> normsOf(const DataObjectBundle::Members& objects,
                                             std::optional<double> time);

/// The sources of data for new objects.
struct DataSources
{
    io::Loader& loader;
    /// The objects made so far, in order.
    const DataObjectBundle::Members& earlier;
    ShownNorms shown = {};
};

/// A kind of data object: a row of the table.
struct TAVRIN_API DataKind
{
    using Object = std::shared_ptr<const DataObject>;
    using Objects = DataObjectBundle::Members;
    using Reference =
        std::variant<io::DataReference, ColorMapReference, MadeGrid, ConstantFunction>;
    /// Tells whether an option accepts an object.
    using IsAccepted = std::function<bool(const Object& object)>;

    /// The base class of all objects of the kind.
    RTTI_TypeId type;
    /// A name for people, without an article.
    const char* name;
    /// The placeholder of a reference in help: "FILE#ARRAY".
    const char* placeholder;
    /// References for completion that need no file: the built-in color maps.
    std::vector<std::string> offers;
    /// Parses a reference. Throws `usage_error` for a malformed one.
    Reference (*parse)(const std::string& text);

    /// The files that are read for a reference.
    std::vector<std::filesystem::path> (*files)(const Reference& reference, io::Loader& loader);

    /// Makes the objects of a reference: any number of members for a bundle option, and otherwise
    /// exactly one. Throws what `io::Loader` and `ColorMapReference` throw.
    Objects (*make)(const Reference& reference, const DataSources& sources, InputKind option,
                    const IsAccepted& isAccepted);
};

/// A parsed reference and the kind of object that it refers to.
struct TAVRIN_API ObjectReference
{
    const DataKind* kind;
    DataKind::Reference parsed;
    /// What was parsed.
    std::string text;

    /// Parses a text for a data or bundle option. Throws `usage_error` for a malformed text and for
    /// an option that accepts no kind of the table.
    static ObjectReference parse(const std::string& text, const InputBase& input);

    /// The times of the steps of a time series in a file that the reference does not restrict to one
    /// of them; empty for anything else.
    std::vector<double> seriesTimes(io::Loader& loader) const;

    /// Whether other objects are needed to make it, and are therefore made first: the function whose
    /// norms a color map spans, or the data whose bounds or domain is taken over.
    bool dependsOnOthers() const;

    /// Whether it is a color map that spans the norms of the field shown.
    bool spansShownNorms() const;

    /// The same reference, restricted to a time step of the series.
    ObjectReference restrictedTo(double time) const;

    std::vector<std::filesystem::path> files(io::Loader& loader) const
    {
        return kind->files(parsed, loader);
    }
};

/// Whether an option takes data, alone or as a bundle.
inline bool takesData(const InputBase& input)
{
    return input.kind() == InputKind::Data || input.kind() == InputKind::Bundle;
}

/// The kinds that a data or bundle option accepts, in the order of the table; none for any other
/// option.
TAVRIN_API std::vector<const DataKind*> kindsOf(const InputBase& input);

/// The placeholder of the value of an option in help: "FILE or FILE#ARRAY". It is "OBJECT" if no kind
/// of the table is accepted, and empty for an option that takes no data.
TAVRIN_API std::string placeholderOf(const InputBase& input);

}
