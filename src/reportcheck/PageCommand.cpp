// reportcheck page: one self-contained HTML file for a report, a comparison
// of two reports, or a folder of reports (a fleet). The page is made whole
// in memory and then written at once, to standard output or to a file that
// appears only when complete.

#include <algorithm>
#include <cstdlib>
#include <cstring>
#include <fstream>
#include <locale.h>
#include <optional>
#include <vector>

#include "lang/Language.h"
#include "reader/PageData.h"
#include "reader/ReportPage.h"
#include "reader/ReportDiff.h"
#include "reportcheck/Common.h"

#if defined(_WIN32)
#include <process.h>
#else
#include <unistd.h>
#endif

namespace reportcheck {

namespace {

constexpr const char kPageUsage[] =
    "usage: reportcheck page [--against OLD] [--lang en|fr] [-o FILE] REPORT\n"
    "       reportcheck page [--lang en|fr] [-o FILE] FOLDER\n"
    "Writes one HTML page that any current browser opens from disk, with no\n"
    "network: for a REPORT, its integrity, its findings and the report itself,\n"
    "section by section, its directories as tables that sort and filter; with\n"
    "--against OLD, each change from OLD marked where it stands; for a FOLDER\n"
    "(searched recursively, as collect does), one row per report, the findings\n"
    "across them and the versions of each file of the suite. The page runs no\n"
    "code but its own and shows every text of a report as text.\n"
    "--lang chooses the page's language (else the user's locale: French when\n"
    "it is French, English otherwise). -o writes FILE, whole or not at all;\n"
    "without it the page goes to standard output.\n"
    "Exit status: 0 every report intact, 1 one altered (the page says so at\n"
    "the top), 2 a report that is not one or cannot be read, or bad arguments\n"
    "(nothing written; in a FOLDER such a file gets its row and the page is\n"
    "written).\n";

struct PageOptions {
    const NativeChar* against = nullptr;
    const NativeChar* output = nullptr;
    const NativeChar* path = nullptr;
    std::string lang;  // "en", "fr", or empty for the user's locale
};

// The options, or nothing when the command line is not one of the usage.
std::optional<PageOptions> ReadOptions(int argc, NativeChar* argv[]) {
    PageOptions options;
    for (int i = 2; i < argc; ++i) {
        const std::string argument = ToUtf8(argv[i]);
        const bool hasValue = i + 1 < argc;
        if (argument == "--against" && hasValue && !options.against) {
            options.against = argv[++i];
        } else if (argument == "-o" && hasValue && !options.output) {
            options.output = argv[++i];
        } else if (argument == "--lang" && hasValue && options.lang.empty()) {
            options.lang = ToUtf8(argv[++i]);
            if (options.lang != "en" && options.lang != "fr") return std::nullopt;
        } else if (!argument.empty() && argument[0] == '-' && argument != "-") {
            return std::nullopt;
        } else if (!options.path) {
            options.path = argv[i];
        } else {
            return std::nullopt;
        }
    }
    if (!options.path) return std::nullopt;
    return options;
}

// The language of the user's locale as the program chooses its own: French
// when the locale is French. Windows names it ("French_France.1252"); on
// Linux the environment does ("fr_FR.UTF-8").
bool UserLocaleIsFrench() {
#if defined(_WIN32)
    const char* current = ::setlocale(LC_ALL, nullptr);
    const std::string saved = current ? current : "C";
    const char* user = ::setlocale(LC_ALL, "");
    const std::wstring language = LanguagePartOfLocaleName(user ? user : "");
    ::setlocale(LC_ALL, saved.c_str());
    return !IsEnglishChoice(language);
#else
    for (const char* name : {"LC_ALL", "LC_MESSAGES", "LANG"}) {
        const char* value = std::getenv(name);
        if (value && *value) return std::strncmp(value, "fr", 2) == 0;
    }
    return false;
#endif
}

// Writes the page whole: to standard output, or to a file next to FILE
// that takes FILE's name only once it holds every byte.
bool WritePage(const std::string& page, const NativeChar* output) {
    if (!output) {
        BinaryOutput();
        return std::fwrite(page.data(), 1, page.size(), stdout) == page.size() && std::fflush(stdout) == 0;
    }
    namespace fs = std::filesystem;
    const fs::path target(output);
#if defined(_WIN32)
    const int pid = _getpid();
#else
    const int pid = static_cast<int>(::getpid());
#endif
    fs::path partial = target;
    partial += ".part" + std::to_string(pid);
    bool ok;
    {
        std::ofstream file(partial, std::ios::binary | std::ios::trunc);
        ok = file.is_open() && file.write(page.data(), static_cast<std::streamsize>(page.size())) && file.flush();
    }
    std::error_code error;
    if (ok) fs::rename(partial, target, error);
    if (!ok || error) {
        fs::remove(partial, error);
        Complain(PathText(target), std::string("cannot be written (") +
                                       (ok ? error.message() : std::string(std::strerror(errno))) + ")");
        return false;
    }
    return true;
}

report_page::PageReport PageOf(const NativeChar* path, const Loaded& loaded) {
    report_page::PageReport page;
    page.file = ToUtf8(path);
    page.verdict = loaded.verdict;
    page.body = loaded.body;
    page.report = &loaded.report;
    return page;
}

// A report that will not do says so, as show and diff say it.
bool Usable(const NativeChar* path, const Loaded& loaded) {
    if (loaded.state == LoadState::Report) return true;
    Complain(ToUtf8(path), loaded.problem);
    return false;
}

int ReportPage(const PageOptions& options, const std::string& lang) {
    const Loaded loaded = Load(options.path);
    std::optional<Loaded> old;
    if (options.against) old = Load(options.against);
    const bool usable = Usable(options.path, loaded);
    if (!(old ? Usable(options.against, *old) : true) || !usable) return kSomeNotAReport;
    std::string json;
    if (old) {
        const auto changes = report_model::DiffReports(old->report, loaded.report);
        json = report_page::ComparisonPageJson(PageOf(options.against, *old), PageOf(options.path, loaded), changes,
                                               lang);
    } else {
        json = report_page::ReportPageJson(PageOf(options.path, loaded), lang);
    }
    if (!WritePage(report_page::BuildPageHtml(json, lang), options.output)) return kSomeNotAReport;
    return std::max(StatusOf(loaded), old ? StatusOf(*old) : kAllIntact);
}

// Every file under `folder`, each folder's names in order, read one at a
// time into the summary; returns the worst status, as collect does.
int AddFolder(const std::filesystem::path& path, report_page::FleetSummary& fleet) {
    namespace fs = std::filesystem;
    std::error_code error;
    const fs::file_status status = fs::status(path, error);
    report_page::FleetMember member;
    member.path = PathText(path);
    if (fs::is_directory(status)) {
        std::vector<fs::path> names;
        for (fs::directory_iterator it(path, error), end; !error && it != end; it.increment(error))
            names.push_back(it->path());
        if (!error) {
            std::sort(names.begin(), names.end());
            int worst = kAllIntact;
            for (const fs::path& name : names) worst = std::max(worst, AddFolder(name, fleet));
            return worst;
        }
        member.problem = "cannot be read (" + error.message() + ")";
    } else if (!fs::is_regular_file(status)) {
        member.problem = "cannot be read (not a regular file)";
    } else {
        const Loaded loaded = Load(path.c_str());
        member.verdict = loaded.verdict;
        member.problem = loaded.problem;
        member.unreadable = loaded.state == LoadState::Unreadable;
        if (loaded.state == LoadState::Report) member.report = &loaded.report;
        if (!member.report) Complain(member.path, member.problem);
        fleet.Add(member);
        return StatusOf(loaded);
    }
    Complain(member.path, member.problem);
    member.unreadable = true;
    fleet.Add(member);
    return kSomeNotAReport;
}

int FleetPage(const PageOptions& options, const std::string& lang) {
    report_page::FleetSummary fleet;
    const int status = AddFolder(std::filesystem::path(options.path), fleet);
    const std::string json = report_page::FleetPageJson(ToUtf8(options.path), fleet, lang);
    if (!WritePage(report_page::BuildPageHtml(json, lang), options.output)) return kSomeNotAReport;
    return status;
}

}  // namespace

int Page(int argc, NativeChar* argv[]) {
    if (argc == 3 && IsHelpOption(ToUtf8(argv[2]))) {
        Print(stdout, kPageUsage);
        return kAllIntact;
    }
    const std::optional<PageOptions> options = ReadOptions(argc, argv);
    if (!options) {
        Print(stderr, kPageUsage);
        return kSomeNotAReport;
    }
    const std::string lang = !options->lang.empty() ? options->lang : UserLocaleIsFrench() ? "fr" : "en";
    std::error_code error;
    if (std::filesystem::is_directory(std::filesystem::path(options->path), error)) {
        if (options->against) {
            Print(stderr, kPageUsage);
            return kSomeNotAReport;
        }
        return FleetPage(*options, lang);
    }
    return ReportPage(*options, lang);
}

}  // namespace reportcheck
