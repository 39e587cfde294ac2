// reportcheck rules: the findings rules in force, with their severity and
// title; --markdown gives docs/rules.md, each rule with its reasoning.
#include <algorithm>

#include "reportcheck/Commands.h"
#include "reportcheck/LoadedReport.h"
#include "reportcheck/Options.h"
#include "reportcheck/ReportDatabase.h"

namespace reportcheck {

namespace {

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

int RunRulesCommand(const Arguments& arguments) {
    RuleOptions options;
    if (auto problem = ReadRuleOptions(arguments, options)) return UsageError(kRulesCommand, *problem);
    try {
        const auto inForce = rules::RulesInForce(options.rulesFolder);
        const auto ordered = rules::InSeverityOrder(inForce);
        BinaryOutput();
        Print(stdout, arguments.Has(kMarkdownOption) ? AsMarkdown(ordered) : AsList(ordered));
        return kAllIntact;
    } catch (const rules::RuleError& failure) {
        Warn(failure.what());
        return kSomeNotAReport;
    }
}

constexpr const Option* kRulesOptions[] = {&kRulesOption, &kMarkdownOption};

}  // namespace
}  // namespace reportcheck

extern const Command kRulesCommand{
    .name = "rules",
    .synopsis = "rules [--rules DIR] [--markdown]",
    .summary = "the findings rules in force",
    .help = "Lists the findings rules in force, most severe first: severity, id,\n"
            "title, and the file a rule comes from when not built in. --markdown\n"
            "prints every rule with its reasoning and query (docs/rules.md is made\n"
            "so).\n"
            "Exit status: 0, or 2 for a bad rule file.\n",
    .options = reportcheck::kRulesOptions,
    .maxOperands = 0,
    .run = reportcheck::RunRulesCommand,
};
