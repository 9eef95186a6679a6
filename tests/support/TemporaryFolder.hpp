#pragma once

#include <algorithm>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <sstream>
#include <stdexcept>
#include <string>
#include <vector>

namespace support
{

/// An empty folder that no other test uses. It is removed with everything in it at the end of its
/// life.
class TemporaryFolder
{
public:
    TemporaryFolder()
    {
        std::string name = (std::filesystem::temp_directory_path() / "tavrin-test-XXXXXX").string();
        if (mkdtemp(name.data()) == nullptr)
            throw std::runtime_error("cannot create a temporary folder " + name);
        mPath = name;
    }
    TemporaryFolder(const TemporaryFolder&) = delete;
    TemporaryFolder& operator=(const TemporaryFolder&) = delete;
    ~TemporaryFolder()
    {
        std::error_code ignored;
        std::filesystem::remove_all(mPath, ignored);
    }

    const std::filesystem::path& path() const { return mPath; }

    friend std::filesystem::path operator/(const TemporaryFolder& folder, const std::string& name)
    {
        return folder.mPath / name;
    }

    /// Writes a file, and creates the folders that its name contains.
    void write(const std::string& name, const std::string& content) const
    {
        std::filesystem::create_directories((mPath / name).parent_path());
        std::ofstream(mPath / name, std::ios::binary) << content;
    }

    std::string read(const std::string& name) const
    {
        std::ostringstream content;
        content << std::ifstream(mPath / name, std::ios::binary).rdbuf();
        return content.str();
    }

    /// The names of all files and folders in it, sorted; names of folders end with a slash.
    std::vector<std::string> listing() const
    {
        std::vector<std::string> names;
        for (const auto& entry : std::filesystem::recursive_directory_iterator(mPath))
            names.push_back(entry.path().lexically_relative(mPath).string() +
                            (entry.is_directory() ? "/" : ""));
        std::ranges::sort(names);
        return names;
    }

private:
    std::filesystem::path mPath;
};

}
