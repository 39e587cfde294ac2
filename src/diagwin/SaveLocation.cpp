#include "diagwin/SaveLocation.h"

std::wstring ProposedReportPath(std::wstring_view rememberedFolder) {
    const std::wstring folder = rememberedFolder.empty() ? std::wstring(L"C:") : std::wstring(rememberedFolder);
    return folder + L"\\report.txt";
}

std::optional<std::wstring> FolderToRemember(std::wstring_view chosenPath) {
    const std::size_t slash = chosenPath.rfind(L'\\');
    if (slash == std::wstring_view::npos) return std::nullopt;
    return std::wstring(chosenPath.substr(0, slash));
}
