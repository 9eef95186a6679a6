#pragma once

#include <cstdlib>
#include <filesystem>
#include <stdexcept>
#include <string>

/// An empty folder that no other test uses, removed with all that is in it at the end.
class TemporaryFolder
{
public:
    TemporaryFolder()
    {
        std::string name = (std::filesystem::temp_directory_path() / "tavrin-test-XXXXXX").string();
        if (mkdtemp(name.data()) == nullptr)
            throw std::runtime_error("no folder can be made like " + name);
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

private:
    std::filesystem::path mPath;
};
