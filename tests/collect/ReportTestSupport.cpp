#include "collect/ReportTestSupport.h"

#include "support/TempDirectory.h"

#include <algorithm>
#include <cwctype>

#include "w32/Scoped.h"
#include "w32/Text.h"

namespace {

constexpr DWORD kChildTimeoutMs = 60000;

std::wstring TrimmedRight(std::wstring text) {
    while (!text.empty() && std::iswspace(text.back())) text.pop_back();
    return text;
}

std::wstring DecodeConsoleOutput(const std::string& bytes) {
    if (bytes.size() >= 2 && static_cast<unsigned char>(bytes[0]) == 0xFF &&
        static_cast<unsigned char>(bytes[1]) == 0xFE) {
        std::wstring text((bytes.size() - 2) / 2, L'\0');
        std::copy_n(bytes.data() + 2, text.size() * 2, reinterpret_cast<char*>(text.data()));
        return text;
    }
    return w32::AnsiToWide(bytes);
}

std::string ReadWholeFile(HANDLE file) {
    ::SetFilePointer(file, 0, nullptr, FILE_BEGIN);
    std::string bytes;
    char chunk[4096];
    DWORD read = 0;
    while (::ReadFile(file, chunk, sizeof(chunk), &read, nullptr) && read > 0) bytes.append(chunk, read);
    return bytes;
}

// A new file name in a folder of the test's own.
std::wstring TemporaryFilePath() { return NewScratchFolder(L"output") + L"\\output.bin"; }

}  // namespace

std::wstring PieceCursor::Next() { return AtEnd() ? L"<end of report>" : pieces_[next_++]; }

std::wstring PieceCursor::Peek() const { return AtEnd() ? L"<end of report>" : pieces_[next_]; }

std::vector<std::wstring> PieceCursor::TakeEntries() {
    std::vector<std::wstring> entries;
    while (!AtEnd() && pieces_[next_].size() > 1 && pieces_[next_].front() == L'\t' && pieces_[next_].back() == L'\n')
        entries.push_back(pieces_[next_++]);
    return entries;
}

bool PieceCursor::SkipPast(std::wstring_view piece) {
    while (!AtEnd())
        if (pieces_[next_++] == piece) return true;
    return false;
}

std::optional<ListedEntry> ParseEntryLine(std::wstring_view line) {
    // "\t%08x %10d\t<created>\t<written>\t<name>\t<version>\n"
    if (line.size() < 2 || line.front() != L'\t' || line.back() != L'\n') return std::nullopt;
    std::vector<std::wstring> fields;
    std::wstring field;
    for (wchar_t c : line.substr(1, line.size() - 2)) {
        if (c == L'\t') {
            fields.push_back(field);
            field.clear();
        } else {
            field.push_back(c);
        }
    }
    fields.push_back(field);
    if (fields.size() != 5 || fields[0].size() < 8) return std::nullopt;
    return ListedEntry{static_cast<unsigned>(std::wcstoul(fields[0].substr(0, 8).c_str(), nullptr, 16)), fields[3],
                       fields[4]};
}

std::vector<ListedEntry> ParseEntryLines(const std::vector<std::wstring>& lines) {
    std::vector<ListedEntry> entries;
    for (const std::wstring& line : lines) {
        const auto entry = ParseEntryLine(line);
        entries.push_back(entry ? *entry : ListedEntry{0xFFFFFFFF, L"<unreadable line>", line});
    }
    return entries;
}

std::wstring TestProgramPath() { return w32::GetModulePath(nullptr); }

std::wstring TestProgramDirectory() {
    const std::wstring path = TestProgramPath();
    return path.substr(0, path.find_last_of(L"\\/"));
}

std::wstring EnvironmentValue(const wchar_t* name) {
    const DWORD needed = ::GetEnvironmentVariableW(name, nullptr, 0);
    if (needed == 0) return {};
    std::wstring value(needed, L'\0');
    value.resize(::GetEnvironmentVariableW(name, value.data(), needed));
    return value;
}

ProcessOutcome RunProcess(const std::wstring& commandLine, HANDLE token) {
    ProcessOutcome outcome;
    SECURITY_ATTRIBUTES inheritable{sizeof(inheritable), nullptr, TRUE};
    const std::wstring outputPath = TemporaryFilePath();
    const w32::ScopedHandle output(::CreateFileW(outputPath.c_str(), GENERIC_READ | GENERIC_WRITE,
                                                 FILE_SHARE_READ | FILE_SHARE_WRITE, &inheritable, CREATE_ALWAYS,
                                                 FILE_ATTRIBUTE_TEMPORARY | FILE_FLAG_DELETE_ON_CLOSE, nullptr));
    if (!output) return outcome;

    STARTUPINFOW startup{};
    startup.cb = sizeof(startup);
    startup.dwFlags = STARTF_USESTDHANDLES;
    startup.hStdOutput = output.Get();
    startup.hStdError = output.Get();
    PROCESS_INFORMATION info{};
    std::wstring mutableLine = commandLine;
    const DWORD flags = CREATE_NO_WINDOW;
    const BOOL created = token ? ::CreateProcessAsUserW(token, nullptr, mutableLine.data(), nullptr, nullptr, TRUE,
                                                        flags, nullptr, nullptr, &startup, &info)
                               : ::CreateProcessW(nullptr, mutableLine.data(), nullptr, nullptr, TRUE, flags, nullptr,
                                                  nullptr, &startup, &info);
    if (!created) return outcome;
    const w32::ScopedHandle process(info.hProcess);
    const w32::ScopedHandle thread(info.hThread);
    if (::WaitForSingleObject(process.Get(), kChildTimeoutMs) != WAIT_OBJECT_0) {
        ::TerminateProcess(process.Get(), 99);
        return outcome;
    }
    outcome.finished = ::GetExitCodeProcess(process.Get(), &outcome.exitCode) != FALSE;
    outcome.output = ReadWholeFile(output.Get());
    return outcome;
}

bool WmicIsThere() {
    // The search CreateProcess makes for a bare name: the system folders and the PATH.
    wchar_t found[MAX_PATH];
    return ::SearchPathW(nullptr, L"wmic.exe", nullptr, MAX_PATH, found, nullptr) != 0;
}

std::vector<std::wstring> WmicValues(const std::wstring& alias, const std::wstring& property) {
    const ProcessOutcome outcome = RunProcess(L"wmic " + alias + L" get " + property);
    if (!outcome.finished) return {};
    std::vector<std::wstring> lines;
    for (std::wstring& line : SplitLines(DecodeConsoleOutput(outcome.output))) {
        line = TrimmedRight(line);
        if (!line.empty()) lines.push_back(line);
    }
    // The first line is the column's title.
    if (!lines.empty()) lines.erase(lines.begin());
    return lines;
}

std::wstring WmicValue(const std::wstring& alias, const std::wstring& property) {
    const std::vector<std::wstring> values = WmicValues(alias, property);
    return values.size() == 1 ? values[0] : L"<unexpected wmic output: " + std::to_wstring(values.size()) + L" rows>";
}

HANDLE OpenLinkedToken() {
    w32::ScopedHandle own;
    if (!::OpenProcessToken(::GetCurrentProcess(), TOKEN_QUERY, own.Put())) return nullptr;
    TOKEN_LINKED_TOKEN linked{};
    DWORD size = 0;
    if (!::GetTokenInformation(own.Get(), TokenLinkedToken, &linked, sizeof(linked), &size)) return nullptr;
    return linked.LinkedToken;
}

SavedRegistryValue::SavedRegistryValue(HKEY root, std::wstring subKey, std::wstring name)
    : root_(root), subKey_(std::move(subKey)), name_(std::move(name)) {
    DWORD size = 0;
    if (::RegGetValueW(root_, subKey_.c_str(), name_.c_str(), RRF_RT_ANY | RRF_NOEXPAND, &type_, nullptr, &size) !=
        ERROR_SUCCESS)
        return;
    data_.resize(size);
    existed_ = ::RegGetValueW(root_, subKey_.c_str(), name_.c_str(), RRF_RT_ANY | RRF_NOEXPAND, &type_, data_.data(),
                              &size) == ERROR_SUCCESS;
    data_.resize(size);
}

SavedRegistryValue::~SavedRegistryValue() {
    if (existed_)
        SetBytes(type_, data_);
    else
        Remove();
}

bool SavedRegistryValue::Remove() const {
    const LSTATUS status = ::RegDeleteKeyValueW(root_, subKey_.c_str(), name_.c_str());
    return status == ERROR_SUCCESS || status == ERROR_FILE_NOT_FOUND;
}

bool SavedRegistryValue::SetBytes(DWORD type, const std::vector<BYTE>& data) const {
    w32::ScopedRegKey key;
    if (::RegCreateKeyExW(root_, subKey_.c_str(), 0, nullptr, 0, KEY_SET_VALUE, nullptr, key.Put(), nullptr) !=
        ERROR_SUCCESS)
        return false;
    return ::RegSetValueExW(key.Get(), name_.c_str(), 0, type, data.data(), static_cast<DWORD>(data.size())) ==
           ERROR_SUCCESS;
}

bool SavedRegistryValue::SetString(const std::wstring& text) const { return SetBytes(REG_SZ, StringBytes(text)); }

bool SavedRegistryValue::SetDword(DWORD value) const {
    const auto* bytes = reinterpret_cast<const BYTE*>(&value);
    return SetBytes(REG_DWORD, std::vector<BYTE>(bytes, bytes + sizeof(value)));
}

std::vector<BYTE> StringBytes(std::wstring_view text) {
    const auto* bytes = reinterpret_cast<const BYTE*>(text.data());
    std::vector<BYTE> data(bytes, bytes + text.size() * sizeof(wchar_t));
    data.insert(data.end(), {0, 0});
    return data;
}

std::wstring FixedProductVersion(const std::wstring& path) {
    DWORD handle = 0;
    std::vector<BYTE> data(::GetFileVersionInfoSizeW(path.c_str(), &handle));
    if (data.empty() || !::GetFileVersionInfoW(path.c_str(), 0, static_cast<DWORD>(data.size()), data.data()))
        return L"<no version resource>";
    VS_FIXEDFILEINFO* info = nullptr;
    UINT size = 0;
    if (!::VerQueryValueW(data.data(), L"\\", reinterpret_cast<void**>(&info), &size)) return L"<no fixed info>";
    return std::to_wstring(HIWORD(info->dwProductVersionMS)) + L"." +
           std::to_wstring(LOWORD(info->dwProductVersionMS)) + L"." +
           std::to_wstring(HIWORD(info->dwProductVersionLS)) + L"." + std::to_wstring(LOWORD(info->dwProductVersionLS));
}

bool SetUnterminatedString(HKEY root, const std::wstring& subKey, const std::wstring& name, std::wstring_view text) {
    w32::ScopedRegKey key;
    if (::RegCreateKeyExW(root, subKey.c_str(), 0, nullptr, 0, KEY_SET_VALUE, nullptr, key.Put(), nullptr) !=
        ERROR_SUCCESS)
        return false;
    std::wstring guarded(text);
    guarded.push_back(L'!');
    const DWORD bytes = static_cast<DWORD>(text.size() * sizeof(wchar_t));
    return ::RegSetValueExW(key.Get(), name.c_str(), 0, REG_SZ, reinterpret_cast<const BYTE*>(guarded.data()), bytes) ==
           ERROR_SUCCESS;
}

DWORD StoredValueSize(HKEY root, const std::wstring& subKey, const std::wstring& name) {
    DWORD size = 0;
    if (::RegGetValueW(root, subKey.c_str(), name.c_str(), RRF_RT_ANY | RRF_NOEXPAND, nullptr, nullptr, &size) !=
        ERROR_SUCCESS)
        return 0;
    return size;
}

std::wstring ReportPrinterPath() { return TestProgramDirectory() + L"\\report_printer.exe"; }

PrintedReport RunReportPrinter(const std::wstring& printerPath, const std::wstring& what, HANDLE token) {
    PrintedReport printed;
    const std::wstring outputPath = TemporaryFilePath();
    const std::wstring commandLine = L"\"" + printerPath + L"\" " + what + L" \"" + outputPath + L"\"";
    const ProcessOutcome outcome = RunProcess(commandLine, token);
    if (outcome.finished) {
        const w32::ScopedHandle file(::CreateFileW(outputPath.c_str(), GENERIC_READ, FILE_SHARE_READ, nullptr,
                                                   OPEN_EXISTING, FILE_ATTRIBUTE_NORMAL, nullptr));
        const std::string bytes = file ? ReadWholeFile(file.Get()) : std::string();
        printed.text.resize(bytes.size() / sizeof(wchar_t));
        std::copy_n(bytes.data(), printed.text.size() * sizeof(wchar_t), reinterpret_cast<char*>(printed.text.data()));
        printed.exitCode = outcome.exitCode;
        printed.ok = file.IsValid();
    }
    ::DeleteFileW(outputPath.c_str());
    return printed;
}

std::vector<std::wstring> SplitLines(std::wstring_view text) {
    std::vector<std::wstring> lines;
    std::size_t start = 0;
    while (start < text.size()) {
        const std::size_t end = text.find(L'\n', start);
        const std::size_t stop = end == std::wstring_view::npos ? text.size() : end + 1;
        lines.emplace_back(text.substr(start, stop - start));
        start = stop;
    }
    return lines;
}
