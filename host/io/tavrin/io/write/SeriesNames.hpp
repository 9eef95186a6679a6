#pragma once

#include <filesystem>
#include <optional>
#include <set>
#include <string>

namespace tavrin::io
{

/// The names of the files of a time series that a ".pvd" file lists.
class SeriesNames
{
public:
    /// Symbolic links are followed: the names belong to the file that `file` leads to.
    explicit SeriesNames(const std::filesystem::path& file);

    /// The folder of the steps.
    const std::filesystem::path& folder() const { return mFolder; }

    /// The name of the file of a step, NAME_0007.vti.
    std::string member(std::size_t step, std::string_view extension) const;

    /// How the ".pvd" file refers to a member.
    std::string reference(const std::string& member) const { return mStem + '/' + member; }

    /// Whether a member could have this name.
    bool isMember(const std::string& name) const;

    /// Whether writing the series may replace the existing file of this member: the ".pvd" file lists
    /// it, or it was written as a step but is not listed, because the ".pvd" file was deleted or the
    /// steps were published without it. What the ".pvd" file lists is read once.
    bool mayReplace(const std::string& member) const;

    /// The members in the folder that writing the series may replace or remove: those that
    /// `mayReplace` accepts among the new ones, those that the ".pvd" file lists, and if there is no
    /// such file, all that were written as steps.
    std::set<std::string> findReplaceable(const std::set<std::string>& newMembers) const;

private:
    const std::set<std::string>& listed() const;

    std::filesystem::path mFile;
    std::string mStem;
    std::filesystem::path mFolder;
    mutable std::optional<std::set<std::string>> mListed;
};

/// Follows the content of each step file, so that a later run knows that it may replace the file. An
/// XML file may end with a comment.
inline constexpr std::string_view stepMark = "<!-- a step of a time series written by tavrin -->\n";

/// Whether a file ends with the mark of steps.
bool isMarkedAsStep(const std::filesystem::path& file);

}
