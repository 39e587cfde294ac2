// A folder of one test's own in the temporary directory, removed with all it
// holds when the test ends; on Linux and on Windows alike.
#pragma once

#include <chrono>
#include <filesystem>
#include <random>
#include <string>
#include <system_error>
#include <thread>

#if defined(_WIN32)
#include <windows.h>
#endif

namespace testsupport {

class TestFolder {
public:
    // A new folder named after `stem`: one that exists already belongs to
    // someone else, so the next name is tried.
    explicit TestFolder(const std::string& stem) {
        std::random_device seed;
        for (;;) {
            path_ = std::filesystem::temp_directory_path() / (stem + "-" + std::to_string(seed()));
            std::error_code error;
            if (std::filesystem::create_directory(path_, error)) return;
            if (error) throw std::filesystem::filesystem_error("cannot make a test folder", path_, error);
        }
    }
    ~TestFolder() { Remove(); }
    TestFolder(const TestFolder&) = delete;
    TestFolder& operator=(const TestFolder&) = delete;

    const std::filesystem::path& Path() const { return path_; }

    // Removes the folder; says why it is still there, or "" once it is gone.
    // Under Wine a child the test ran and waited for may hold its current
    // folder or output file for a moment after it ends: the removal is
    // tried again until then, for at most 10 s.
    std::string Remove() const {
        const auto deadline = std::chrono::steady_clock::now() + std::chrono::seconds(10);
        for (;;) {
            std::error_code error;
            RemoveTree(path_, error);
            if (!std::filesystem::exists(path_)) return {};
            if (std::chrono::steady_clock::now() > deadline)
                return path_.string() + ": still there (" + (error ? error.message() : "no error said") + ")";
            std::this_thread::sleep_for(std::chrono::milliseconds(50));
        }
    }

private:
    // The C++ library's remove_all would follow a junction, or a folder link
    // as Wine shows one, into what it leads to (and round a loop for ever):
    // a link is removed itself, never walked. A test that makes links removes
    // them first (Wine cannot remove a Unix link to a folder).
    // Goes on past what cannot be removed yet; `error` is the last trouble.
    static void RemoveTree(const std::filesystem::path& path, std::error_code& error) {
        if (IsFolder(path)) {
            std::error_code listing;
            std::filesystem::directory_iterator entries(path, listing), end;
            for (; !listing && entries != end; entries.increment(listing)) RemoveTree(entries->path(), error);
            if (listing) error = listing;
        }
        std::error_code removal;
        std::filesystem::remove(path, removal);
        if (removal) error = removal;
    }

    static bool IsFolder(const std::filesystem::path& path) {
#if defined(_WIN32)
        const DWORD attributes = ::GetFileAttributesW(path.c_str());
        return attributes != INVALID_FILE_ATTRIBUTES && (attributes & FILE_ATTRIBUTE_DIRECTORY) &&
               !(attributes & FILE_ATTRIBUTE_REPARSE_POINT);
#else
        std::error_code ignored;
        return std::filesystem::is_directory(std::filesystem::symlink_status(path, ignored));
#endif
    }

    std::filesystem::path path_;
};

}  // namespace testsupport
