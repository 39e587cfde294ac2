// The files the PATHs of collect or findings stand for.
#pragma once

#include <filesystem>
#include <functional>
#include <string>
#include <vector>

// Calls `onFile` for every file at `roots`: a root that is a file, or a
// folder's files in name order, then its folders', one level at a time
// (only one folder's names are held at once). The walk never leaves the
// folders it was given: a link or junction to a folder is not followed (a
// link to a file is read as the file), and each folder and file is read
// once, however the roots overlap (`inbox inbox/sub`). What it leaves out
// goes to `onSkip` with the reason; a path that cannot be read, a pipe or a
// device to `onProblem`. Gives the worst status the calls gave.
struct FileWalkCalls {
    std::function<int(const std::filesystem::path&)> onFile;
    std::function<int(const std::filesystem::path&, const std::string&)> onProblem;
    // Told on standard error by default: "reportcheck: PATH: skipped (REASON)".
    std::function<void(const std::filesystem::path&, const std::string&)> onSkip;
};

int ForEachFile(const std::vector<std::filesystem::path>& roots, const FileWalkCalls& calls);
