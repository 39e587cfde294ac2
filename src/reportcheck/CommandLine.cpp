#include "reportcheck/CommandLine.h"

#include <algorithm>
#include <optional>

#include "reader/TerminalText.h"
#include "reportcheck/Commands.h"
#include "reportcheck/LoadedReport.h"
#include "reportcheck/Options.h"

namespace {

constexpr std::string_view kEndOfOptions = "--";

constexpr const char kOptionsAnywhere[] =
    "Options may stand anywhere among the arguments; \"--\" ends them, so that\n"
    "every argument after it is an operand, whatever its name.\n";

constexpr const char kUsageStatus[] =
    "Exit status 64: the command line is wrong (an unknown option, an argument\n"
    "too many or too few); a line on standard error says what.\n";

bool IsHelp(std::string_view argument) {
    return argument == kHelpOption.name || argument == "-h" || argument == "/?";
}

bool LooksLikeOption(std::string_view argument) {
    return (argument.size() > 1 && argument[0] == '-') || argument == "/?";
}

// "--db=FILE" is "--db" with the value "FILE".
std::string_view OptionName(std::string_view argument) {
    return argument.substr(0, argument.find('='));
}

const Option* FindOption(std::span<const Option* const> options, std::string_view name) {
    const auto found = std::find_if(options.begin(), options.end(), [&](const Option* o) { return o->name == name; });
    return found == options.end() ? nullptr : *found;
}

// Any command's option of that name: whether a word after it is its value
// must be known before the command is.
const Option* FindAnyOption(std::string_view name) {
    for (const Command* command : kCommands)
        if (const Option* option = FindOption(command->options, name)) return option;
    return nullptr;
}

const Command* FindCommand(std::string_view name) {
    for (const Command* command : kCommands)
        if (command->name == name) return command;
    return nullptr;
}

// The index of the command word in `words`: the first operand, when it
// names a command.
std::optional<std::size_t> CommandWordIndex(const std::vector<std::string>& words) {
    for (std::size_t i = 0; i < words.size(); ++i) {
        if (words[i] == kEndOfOptions) return std::nullopt;
        if (!LooksLikeOption(words[i])) {
            if (FindCommand(words[i])) return i;
            return std::nullopt;
        }
        const Option* option = FindAnyOption(words[i]);
        if (option && !option->valueName.empty()) ++i;  // "--db FILE": FILE is no command
    }
    return std::nullopt;
}

std::string OptionLines(const Command& command) {
    std::string text = "Options:\n";
    auto line = [&](const Option& option) {
        std::string left = "  " + std::string(option.name);
        if (!option.valueName.empty()) left.append(" ").append(option.valueName);
        left.resize(std::max<std::size_t>(left.size() + 2, 18), ' ');
        text += left + std::string(option.help) + "\n";
    };
    for (const Option* option : command.options) line(*option);
    line(kHelpOption);
    return text;
}

std::string CommandHelp(const Command& command) {
    return "usage: reportcheck " + std::string(command.synopsis) + "\n" + std::string(command.help) +
           OptionLines(command) + kUsageStatus;
}

// The default command's synopsis without its name: "FILE...".
std::string_view BareSynopsis() {
    const Command& fallback = *kCommands[0];
    return fallback.synopsis.substr(fallback.name.size() + 1);
}

std::string GeneralHelp() {
    std::string text = "usage: reportcheck " + std::string(BareSynopsis()) + "\n";
    auto line = [&](std::string_view synopsis, std::string_view summary) {
        std::string left = "       reportcheck " + std::string(synopsis);
        left.resize(std::max<std::size_t>(left.size() + 2, 44), ' ');
        text += left + std::string(summary) + "\n";
    };
    for (const Command* command : kCommands) line(command->synopsis, command->summary);
    line(kVersionOption.name, kVersionOption.help);
    text += kOptionsAnywhere;
    text += "(reportcheck COMMAND --help tells more of each command.)\n\n";
    text += kCommands[0]->help;
    text += kUsageStatus;
    return text;
}

// What the words say, before anything runs.
struct Parsed {
    Arguments arguments;
    bool help = false;
    bool version = false;
    std::string problem;  // the first thing wrong; empty when nothing is
};

void Refuse(Parsed& parsed, std::string problem) {
    if (parsed.problem.empty()) parsed.problem = std::move(problem);
}

Parsed Parse(const Command& command, const std::vector<std::string>& words, const std::vector<NativeString>& natives,
             std::optional<std::size_t> commandWord) {
    Parsed parsed;
    bool optionsEnded = false;
    for (std::size_t i = 0; i < words.size(); ++i) {
        if (i == commandWord) continue;
        const std::string& word = words[i];
        if (optionsEnded || !LooksLikeOption(word)) {
            parsed.arguments.AddOperand(natives[i]);
        } else if (word == kEndOfOptions) {
            optionsEnded = true;
        } else if (IsHelp(word)) {
            parsed.help = true;
        } else if (word == kVersionOption.name) {
            parsed.version = true;
        } else if (const Option* option = FindOption(command.options, OptionName(word))) {
            const std::size_t equals = word.find('=');
            if (option->valueName.empty() && equals != std::string::npos)
                Refuse(parsed, "option " + std::string(option->name) + " takes no value");
            else if (option->valueName.empty())
                parsed.arguments.AddOption(*option);
            else if (equals != std::string::npos)
                parsed.arguments.AddOption(*option, natives[i].substr(equals + 1));
            else if (i + 1 < words.size())
                parsed.arguments.AddOption(*option, natives[++i]);
            else
                Refuse(parsed, "option " + std::string(option->name) + " needs a value, " +
                                   std::string(option->valueName));
        } else {
            Refuse(parsed, "unknown option " + word);
        }
    }
    const std::size_t count = parsed.arguments.Operands().size();
    if (count < command.minOperands) Refuse(parsed, std::string(command.name) + ": too few arguments");
    if (count > command.maxOperands) Refuse(parsed, std::string(command.name) + ": too many arguments");
    return parsed;
}

}  // namespace

bool Arguments::Has(const Option& option) const {
    return std::any_of(options_.begin(), options_.end(), [&](const auto& given) { return given.first == &option; });
}

const NativeString* Arguments::Value(const Option& option) const {
    for (auto given = options_.rbegin(); given != options_.rend(); ++given)
        if (given->first == &option) return &given->second;
    return nullptr;
}

std::vector<NativeString> Arguments::Values(const Option& option) const {
    std::vector<NativeString> values;
    for (const auto& given : options_)
        if (given.first == &option) values.push_back(given.second);
    return values;
}

void Arguments::AddOption(const Option& option, NativeString value) {
    options_.emplace_back(&option, std::move(value));
}

int UsageError(const Command& command, const std::string& problem) {
    Print(stderr, "reportcheck: " + report_model::ForTerminal(problem) + "\nusage: reportcheck " + std::string(command.synopsis) +
                      "\n(reportcheck " + std::string(command.name) + " --help tells more.)\n");
    return kUsageError;
}

int RunCommandLine(int argc, NativeChar* argv[]) {
    std::vector<NativeString> natives(argv + 1, argv + argc);
    std::vector<std::string> words;
    for (const NativeString& native : natives) words.push_back(ToUtf8(native));
    if (words.empty()) {
        Print(stderr, GeneralHelp());
        return kUsageError;
    }
    const std::optional<std::size_t> commandWord = CommandWordIndex(words);
    const Command& command = commandWord ? *FindCommand(words[*commandWord]) : *kCommands[0];
    const Parsed parsed = Parse(command, words, natives, commandWord);
    if (parsed.help) {
        Print(stdout, commandWord ? CommandHelp(command) : GeneralHelp());
        return kAllIntact;
    }
    if (parsed.version) {
        Print(stdout, "reportcheck " REPORTCHECK_VERSION "\n");
        return kAllIntact;
    }
    if (!parsed.problem.empty()) return UsageError(command, parsed.problem);
    return command.run(parsed.arguments);
}
