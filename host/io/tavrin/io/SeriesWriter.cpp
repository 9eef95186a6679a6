#include <tavrin/io/SeriesWriter.hpp>

#include <tavrin/value/LexicalCast.hpp>
#include <tavrin/io/OutputFile.hpp>

#include <fmt/format.h>
#include <pugixml.hpp>

#include <algorithm>
#include <array>
#include <cerrno>
#include <set>
#include <system_error>

#include <fcntl.h>
#include <stdio.h>
#include <sys/stat.h>

namespace tavrin::io
{

namespace fs = std::filesystem;

namespace
{

/// The names of the files of a series.
class Naming
{
public:
    explicit Naming(const fs::path& file)
        : mStem(file.stem().string()), mFolder(fs::path(file).replace_extension())
    {
    }

    const fs::path& folder() const { return mFolder; }

    std::string member(std::size_t step, const std::string& extension) const
    {
        return fmt::format("{}_{:04}{}", mStem, step, extension);
    }

    /// How the ".pvd" file refers to a member.
    std::string reference(const std::string& member) const { return mStem + '/' + member; }

    /// Whether a file could be a member by its name.
    bool isMember(const std::string& name) const
    {
        const std::string stem = fs::path(name).stem().string();
        const std::string extension = fs::path(name).extension().string();
        constexpr std::array extensions{".vti", ".vtr", ".vts", ".vtu", ".vtp"};
        return stem.starts_with(mStem + '_') && stem.size() >= mStem.size() + 5 &&
               stem.find_first_not_of("0123456789", mStem.size() + 1) == std::string::npos &&
               std::ranges::find(extensions, extension) != extensions.end();
    }

private:
    std::string mStem;
    fs::path mFolder;
};

/// The members of an earlier series that the ".pvd" file at hand lists.
std::set<std::string> findListedMembers(const fs::path& file, const Naming& naming)
{
    std::set<std::string> members;
    pugi::xml_document document;
    if (!document.load_file(file.c_str()))
        return members;
    for (const auto& node : document.child("VTKFile").child("Collection").children("DataSet"))
    {
        const std::string name = fs::path(node.attribute("file").value()).filename().string();
        if (naming.isMember(name) && node.attribute("file").value() == naming.reference(name))
            members.insert(name);
    }
    return members;
}

/// Whether anything has the name, and be it a link that leads nowhere.
bool isTaken(const fs::path& file)
{
    std::error_code ignored;
    return fs::exists(fs::symlink_status(file, ignored));
}

/// Refuses to replace a file that does not belong to the series at hand; returns those that do.
std::set<std::string> requireReplaceable(const fs::path& file, const Naming& naming,
                                         const std::vector<std::string>& members)
{
    std::set<std::string> listed = findListedMembers(file, naming);
    std::error_code ignored;
    const fs::path& folder = naming.folder();
    if (!isTaken(folder))
        return listed;
    if (!fs::is_directory(folder, ignored))
        throw FileError(file,
                        folder.string() + ", where the files of its steps belong, is not a folder");
    const auto foreign =
        std::ranges::find_if(members, [&](const std::string& member)
                             { return isTaken(folder / member) && !listed.contains(member); });
    if (foreign != members.end())
        throw FileError(file, (folder / *foreign).string() +
                                  " exists and belongs to another data set; remove it or choose "
                                  "another name");
    return listed;
}

/// A folder for the files of a series until they take their place.
class TemporaryFolder
{
public:
    TemporaryFolder(const fs::path& file, const Naming& naming) : mNaming(naming)
    {
        int result = 0;
        do
        {
            mPath = temporaryName(folderOf(file));
            result = mkdir(mPath.c_str(), 0777);
        } while (result != 0 && errno == EEXIST);
        if (result != 0)
            throw FileError(file, std::generic_category().message(errno));
        // Nobody may look into it who may not look into the folder that it replaces.
        std::error_code ignored;
        const fs::file_status existing = fs::status(naming.folder(), ignored);
        if (fs::is_directory(existing))
            fs::permissions(mPath, existing.permissions(), ignored);
    }
    TemporaryFolder(const TemporaryFolder&) = delete;
    TemporaryFolder& operator=(const TemporaryFolder&) = delete;

    /// Removes members only: the folder may have become that of an earlier series, and a file that
    /// somebody has just put there stays.
    ~TemporaryFolder()
    {
        std::error_code ignored;
        std::vector<fs::path> members;
        for (const auto& entry : fs::directory_iterator(mPath, ignored))
            if (mNaming.isMember(entry.path().filename().string()))
                members.push_back(entry.path());
        for (const fs::path& member : members)
            fs::remove(member, ignored);
        fs::remove(mPath, ignored);
    }

    const fs::path& path() const { return mPath; }

private:
    const Naming& mNaming;
    fs::path mPath;
};

bool exchange(const fs::path& a, const fs::path& b)
{
    return renameat2(AT_FDCWD, a.c_str(), AT_FDCWD, b.c_str(), RENAME_EXCHANGE) == 0;
}

bool holdsOnly(const fs::path& folder, const std::set<std::string>& names)
{
    return std::ranges::all_of(fs::directory_iterator(folder), [&](const fs::directory_entry& entry)
                               { return names.contains(entry.path().filename().string()); });
}

/// Moves the members from the temporary folder to `folder`. As a whole where that does not exist
/// or has nothing but members of the earlier series; among the other files in it else.
void putInPlace(const fs::path& temporary, const fs::path& folder,
                const std::vector<std::string>& members, const std::set<std::string>& listed)
{
    if (!isTaken(folder))
        return fs::rename(temporary, folder);
    const bool isOurs = !fs::is_symlink(folder) && holdsOnly(folder, listed);
    if (isOurs && exchange(temporary, folder))
        return;
    for (const std::string& member : members)
        fs::rename(temporary / member, folder / member);
}

void removeStale(const fs::path& folder, const std::vector<std::string>& members,
                 const std::set<std::string>& listed)
{
    std::error_code ignored;
    for (const std::string& member : listed)
        if (std::ranges::find(members, member) == members.end())
            fs::remove(folder / member, ignored);
}

void writeCollection(std::ostream& stream, const Naming& naming,
                     const std::vector<std::string>& members, const std::vector<double>& timeSteps)
{
    pugi::xml_document document;
    auto root = document.append_child("VTKFile");
    root.append_attribute("type") = "Collection";
    root.append_attribute("version") = "0.1";
    auto collection = root.append_child("Collection");
    for (std::size_t step = 0; step < members.size(); ++step)
    {
        auto member = collection.append_child("DataSet");
        const double time = timeSteps.empty() ? 0.0 : timeSteps[step];
        member.append_attribute("timestep") = toText(time).c_str();
        member.append_attribute("part") = 0;
        member.append_attribute("file") = naming.reference(members[step]).c_str();
    }
    document.save(stream, "  ");
}

/// A series whose steps wait in a temporary folder.
class PendingSeries final : public PendingFile
{
public:
    PendingSeries(const fs::path& file, Naming naming, std::vector<std::string> members,
                  const volatile bool& abortFlag)
        : mFile(file), mNaming(std::move(naming)), mMembers(std::move(members)),
          mAbortFlag(abortFlag), mCollection(file, abortFlag),
          mListed(requireReplaceable(file, mNaming, mMembers)), mTemporary(file, mNaming)
    {
    }

    /// Writes what `publish` puts in place.
    void write(const std::vector<double>& timeSteps,
               const std::function<void(std::size_t, std::ostream&)>& writeMember)
    {
        for (std::size_t step = 0; step < mMembers.size(); ++step)
        {
            OutputFile member(mTemporary.path() / mMembers[step], mAbortFlag, mFile);
            writeMember(step, member.stream());
            member.publish();
        }
        writeCollection(mCollection.stream(), mNaming, mMembers, timeSteps);
        mCollection.complete();
    }

    void publish() override
    {
        try
        {
            putInPlace(mTemporary.path(), mNaming.folder(), mMembers, mListed);
        }
        catch (const fs::filesystem_error& error)
        {
            throw FileError(mFile, error.code().message());
        }
        mCollection.publish();
        removeStale(mNaming.folder(), mMembers, mListed);
    }

private:
    fs::path mFile;
    Naming mNaming;
    std::vector<std::string> mMembers;
    const volatile bool& mAbortFlag;
    OutputFile mCollection;
    std::set<std::string> mListed;
    TemporaryFolder mTemporary;
};

}

std::unique_ptr<PendingFile> prepareSeries(
    const fs::path& file, const std::string& memberExtension, const std::vector<double>& timeSteps,
    const std::function<void(std::size_t, std::ostream&)>& writeMember,
    const volatile bool& abortFlag)
{
    const Naming naming(file);
    std::vector<std::string> members;
    for (std::size_t step = 0; step < std::max<std::size_t>(1, timeSteps.size()); ++step)
        members.push_back(naming.member(step, memberExtension));
    auto series = std::make_unique<PendingSeries>(file, naming, std::move(members), abortFlag);
    series->write(timeSteps, writeMember);
    return series;
}

bool isStepOf(const fs::path& file, const fs::path& series)
{
    std::error_code ignored;
    const Naming naming(series);
    return series.extension() == ".pvd" && naming.isMember(file.filename().string()) &&
           fs::equivalent(folderOf(file), naming.folder(), ignored);
}

}
