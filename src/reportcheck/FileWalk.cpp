#include "reportcheck/FileWalk.h"

#include <algorithm>
#include <cerrno>
#include <vector>

#include "reportcheck/LoadedReport.h"

int ForEachFile(const std::filesystem::path& path, const std::function<int(const std::filesystem::path&)>& onFile,
                const std::function<int(const std::filesystem::path&, const std::string&)>& onProblem) {
    namespace fs = std::filesystem;
    std::error_code error;
    const fs::file_status status = fs::status(path, error);
    if (fs::is_regular_file(status)) return onFile(path);
    if (!fs::is_directory(status)) {
        // A pipe or a device would block the reading; a broken link has nothing to read.
        return onProblem(path, fs::exists(status) ? "cannot be read (not a regular file)" : CannotBeRead(ENOENT));
    }
    std::vector<fs::path> names;
    fs::directory_iterator it(path, error), end;
    if (error) return onProblem(path, "cannot be read (" + error.message() + ")");
    for (; it != end; it.increment(error)) {
        if (error) break;
        names.push_back(it->path());
    }
    if (error) return onProblem(path, "cannot be read (" + error.message() + ")");
    std::sort(names.begin(), names.end());
    int worst = kAllIntact;
    for (const fs::path& name : names) worst = std::max(worst, ForEachFile(name, onFile, onProblem));
    return worst;
}
