#include "app/CommandLine.h"

namespace {

bool IsHelpName(std::wstring_view name) {
    // "?" and "h" in any case; "help" in small letters only.
    return name == L"?" || name == L"h" || name == L"H" || name == L"help";
}

void ClassifyToken(std::wstring token, CommandLine& result) {
    if (token.empty()) return;
    if (token[0] == L'/' || token[0] == L'-') {
        if (IsHelpName(std::wstring_view(token).substr(1)))
            result.help = true;
        else
            result.invalid = true;
        return;
    }
    result.arguments.push_back(std::move(token));
}

}  // namespace

CommandLine ParseCommandLine(std::wstring_view text) {
    CommandLine result;
    std::wstring token;
    bool inQuotes = false;
    for (wchar_t c : text) {
        if (c == L' ' && !inQuotes) {
            ClassifyToken(std::move(token), result);
            token.clear();
            continue;
        }
        if (token.size() >= kMaxCommandLineToken) {
            result.invalid = true;
            return result;
        }
        if (c == L'"')
            inQuotes = !inQuotes;
        else
            token.push_back(c);
    }
    ClassifyToken(std::move(token), result);
    return result;
}

std::wstring UsageText(bool english, std::wstring_view programName) {
    std::wstring name(programName);
    if (english) {
        return L"Usage: " + name + L" [/?] [report-file]\n\n"
               L"/?, /h or /help\tShows this help and ends.\n"
               L"report-file\tWrites the system report to this file, without any window, and ends.\n\n"
               L"Options may also begin with \"-\".\n"
               L"Without parameters the main window opens; its System report button "
               L"shows the report of this computer.\n\n"
               L"Exit status: 0 done, 2 invalid parameters, 3 report file cannot be written.";
    }
    return L"Utilisation : " + name + L" [/?] [fichier-rapport]\n\n"
           L"/?, /h ou /help\tAffiche cette aide et termine.\n"
           L"fichier-rapport\tÉcrit le rapport système dans ce fichier, sans aucune fenêtre, et termine.\n\n"
           L"Les options peuvent aussi commencer par \"-\".\n"
           L"Sans paramètre, la fenêtre principale s'ouvre ; son bouton Rapport système "
           L"affiche le rapport de cet ordinateur.\n\n"
           L"Code de sortie : 0 terminé, 2 paramètres invalides, 3 fichier rapport impossible à écrire.";
}
