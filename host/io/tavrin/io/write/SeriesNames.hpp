#pragma once

#include <filesystem>
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

    /// The members in the folder that writing the series may replace or remove: those that the
    /// ".pvd" file lists, and those that were written as steps but are not listed by it because it
    /// was deleted, or because they were published without it.
    std::set<std::string> findReplaceable(const std::set<std::string>& newMembers) const;

private:
    std::filesystem::path mFile;
    std::string mStem;
    std::filesystem::path mFolder;
};

/// Follows the content of each step file, so that a later run knows that it may replace the file. An
/// XML file may end with a comment.
inline constexpr std::string_view stepMark = "<!-- a step of a time series written by tavrin -->\n";

/// Whether a file ends with the mark of steps.
bool isMarkedAsStep(const std::filesystem::path& file);

}
