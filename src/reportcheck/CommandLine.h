// reportcheck's command line: a command word, then options and operands in
// any order. A command is a table entry (Commands.h) that names its options;
// an option is declared once (Options.h) and listed by every command that
// takes it. "--" ends the options, so that any name is an operand; the
// first operand names the command when it is one, and otherwise the command
// is `check` and every operand a file.
#pragma once

#include <cstddef>
#include <limits>
#include <span>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "reportcheck/Console.h"

struct Option {
    std::string_view name;       // "--json"
    std::string_view valueName;  // "FILE" when it takes one ("--db FILE", "--db=FILE"); empty for a flag
    std::string_view help;       // its line in the command's --help
};

// What the command line gave a command: the options seen, with their
// values, and the operands in order.
class Arguments {
public:
    bool Has(const Option& option) const;
    // The last value given with the option; nullptr when it was not given.
    const NativeString* Value(const Option& option) const;
    // Every value given with the option, in order.
    std::vector<NativeString> Values(const Option& option) const;
    const std::vector<NativeString>& Operands() const { return operands_; }

    void AddOption(const Option& option, NativeString value = {});
    void AddOperand(NativeString operand) { operands_.push_back(std::move(operand)); }

private:
    std::vector<std::pair<const Option*, NativeString>> options_;
    std::vector<NativeString> operands_;
};

struct Command {
    std::string_view name;      // "show"
    std::string_view synopsis;  // after "usage: reportcheck ": "show --json FILE"
    std::string_view summary;   // its line in reportcheck --help
    std::string_view help;      // its --help, between the usage line and the options
    std::span<const Option* const> options;
    std::size_t minOperands = 0;
    std::size_t maxOperands = kAnyNumber;
    int (*run)(const Arguments& arguments) = nullptr;

    static constexpr std::size_t kAnyNumber = std::numeric_limits<std::size_t>::max();
};

// Parses argv[1..] and runs the command; the exit status.
int RunCommandLine(int argc, NativeChar* argv[]);

// For a handler that finds its arguments wrong beyond what the table says:
// the problem, the command's usage on standard error, and kUsageError.
int UsageError(const Command& command, const std::string& problem);
