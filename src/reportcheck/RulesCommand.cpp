// reportcheck rules: the findings rules in force, with their severity and
// title; --markdown gives docs/rules.md, each rule with its reasoning.
#include <algorithm>
#include <stdexcept>

#include "reportcheck/FindingsCommands.h"
#include "reportcheck/ReportDatabase.h"

namespace reportcheck {

namespace {

constexpr const char kRulesUsage[] =
    "usage: reportcheck rules [--rules DIR] [--markdown]\n"
    "Lists the findings rules in force, most severe first: severity, id,\n"
    "title, and where a rule comes from when not built in. --rules DIR adds\n"
    "the rules of DIR/*.sql or replaces built-in ones of the same id.\n"
    "--markdown prints every rule with its reasoning and query (the page\n"
    "docs/rules.md is made so).\n"
    "Exit status: 0, or 2 for a bad rule file or bad arguments.\n";

std::string Padded(std::string_view text, std::size_t width) {
    std::string padded(text);
    if (padded.size() < width) padded.append(width - padded.size(), ' ');
    return padded;
}

std::string AsList(const std::vector<const rules::Rule*>& ordered) {
    std::size_t idWidth = 0;
    for (const rules::Rule* rule : ordered) idWidth = std::max(idWidth, rule->id.size());
    std::string out;
    for (const rules::Rule* rule : ordered) {
        out += Padded(rules::SeverityName(rule->severity), 8) + Padded(rule->id, idWidth + 2) + rule->title;
        if (rule->source != "built-in") out += "  (" + rule->source + ")";
        out += "\n";
    }
    return out;
}

std::string AsMarkdown(const std::vector<const rules::Rule*>& ordered) {
    std::string out =
        "# Findings rules\n\n"
        "Made by `reportcheck rules --markdown` from the files of `rules/`: do not edit; a test checks that\n"
        "this page is current. How rules are written and run: README, \"Finding problems\"; the tables they\n"
        "query: [report-tables.md](report-tables.md).\n\n"
        "| Severity | Rule | Title |\n|---|---|---|\n";
    for (const rules::Rule* rule : ordered)
        out += "| " + std::string(rules::SeverityName(rule->severity)) + " | [`" + rule->id + "`](#" +
               [&] {
                   std::string anchor = rule->id;
                   anchor.erase(std::remove(anchor.begin(), anchor.end(), '.'), anchor.end());
                   return anchor;
               }() +
               ") | " + rule->title + " |\n";
    for (const rules::Rule* rule : ordered) {
        out += "\n## " + rule->id + "\n\n";
        out += "**" + std::string(rules::SeverityName(rule->severity)) + "**: " + rule->title + "  \n";
        out += "*" + rule->titleFr + "*\n\n";
        if (!rule->why.empty()) out += "Why: " + rule->why + "\n\n";
        out += "Remedy: " + rule->remedy + "  \n*" + rule->remedyFr + "*\n\n";
        if (!rule->needs.empty()) {
            out += "Not checked on a report without: ";
            for (std::size_t i = 0; i < rule->needs.size(); ++i) out += (i ? ", " : "") + rule->needs[i];
            out += ".\n\n";
        }
        if (!rule->link.empty()) out += "See " + rule->link + "\n\n";
        std::string query = rule->query;
        while (!query.empty() && (query.back() == '\n' || query.back() == '\r')) query.pop_back();
        out += "```sql\n" + query + "\n```\n";
    }
    return out;
}

}  // namespace

int ListRules(int argc, NativeChar* argv[]) {
    if (argc == 3 && IsHelpOption(ToUtf8(argv[2]))) {
        Print(stdout, kRulesUsage);
        return kAllIntact;
    }
    RuleOptions options;
    bool markdown = false;
    try {
        for (int i = 2; i < argc; ++i) {
            if (ToUtf8(argv[i]) == "--markdown")
                markdown = true;
            else if (!TakeRuleOption(argc, argv, i, options))
                throw std::invalid_argument("unknown argument " + ToUtf8(argv[i]));
        }
    } catch (const std::invalid_argument& bad) {
        Print(stderr, std::string("reportcheck: ") + bad.what() + "\n" + kRulesUsage);
        return kSomeNotAReport;
    }
    try {
        const auto inForce = rules::RulesInForce(options.rulesFolder);
        const auto ordered = rules::InSeverityOrder(inForce);
        BinaryOutput();
        Print(stdout, markdown ? AsMarkdown(ordered) : AsList(ordered));
        return kAllIntact;
    } catch (const rules::RuleError& failure) {
        Print(stderr, std::string("reportcheck: ") + failure.what() + "\n");
        return kSomeNotAReport;
    }
}

}  // namespace reportcheck
