// reportcheck redact's core: which values are replaced and which kept, the
// pseudonyms and their map, the marker, and the self-check that finds a
// value left behind.
#include <gtest/gtest.h>

#include <algorithm>
#include <string>
#include <vector>

#include "reader/ReportJson.h"
#include "reader/ReportRedact.h"
#include "reader/ReportRender.h"

using namespace report_model;
using namespace report_redact;

namespace {

// A report with a private value in every place redact knows, the keyword
// "Acme" in paths, a file name, an excerpt, an adapter's friendly name and
// a line the reader does not recognise.
const std::string kPrivateBody =
    "Orvane Software system report on 11/22/26 14:36:06\n"
    "\n"
    "\nProgram:\n"
    "OrvaneDiagnostics 9.3.1.1042\n"
    "in C:\\Users\\anne.berg\\ACME tools\n"
    "\nHost:\n"
    "\tname: PC-ANNE (CORPNET\\pc-anne)\n"
    "\tuser: anne.berg\n"
    "\nWindows:\n"
    "\tversion reported: 8 (Desktop)\n"
    "\treal version: 10.0.19045\n"
    "\tid: 12345-OEM-0000001-54321\n"
    "\tsystem path: C:\\windows\n"
    "\nHardware:\n"
    "\tboard: Intel Corporation\n"
    "\tC volume: 0x43000000 0xa NTFS total 264212084K free 81646476K (user 81646476K)\n"
    "\nNetwork:\n"
    "Adapters enumeration:\n"
    "\tAdapter name: {4D36E972-E325-11CE-BFC1-08002BE10318}\n"
    "\tIfIndex (IPv4 interface): 2\n"
    "\tDNS Suffix: office.acme-health.example\n"
    "\tDescription: Intel(R) Ethernet Connection I219-LM\n"
    "\tFriendly name: acme lan\n"
    "\tPhysical address: 00-1A-2B-3C-4D-5E\n"
    "\tMtu: 1500\n"
    "\n"
    "\nOrvane Software installation:\n"
    "* Current directory (C:\\Users\\Anne.Berg\\ACME tools):\n"
    "\t00000020       4753\t07/03/2021  14:05:09\t08/03/2021  09:00:00\tacme-notes.txt\t ACL: Allow "
    "PC-ANNE\\anne.berg [RWX]; Allow CORPNET\\jdoe [R  ]; Allow BUILTIN\\Administrators [RWX]; Allow "
    "NT AUTHORITY\\SYSTEM [RWX]; Allow Everyone [R  ];\n"
    "\t\t\t\tContent:\"notes of ACME\"\n"
    "* Registry installation data:\n"
    "\tInstallLocation: D:\\Acme\\Suite\n"
    "\tVersionMajor: 9\n"
    "* Registry installation directory:\n"
    "\t00000010          0\t01/01/2020  00:00:00\t01/01/2020  00:00:01\ttool.dll\t9.3.1.0\n"
    "a line of acme's own\n";

const std::string kRedactedBody =
    "Orvane Software system report on 11/22/26 14:36:06\n"
    "\n"
    "\nProgram:\n"
    "OrvaneDiagnostics 9.3.1.1042\n"
    "in C:\\Users\\USER-0001\\KEYWORD-0001 tools\n"
    "\nHost:\n"
    "\tname: HOST-0001 (DOMAIN-0001\\HOST-0001)\n"
    "\tuser: USER-0001\n"
    "\nWindows:\n"
    "\tversion reported: 8 (Desktop)\n"
    "\treal version: 10.0.19045\n"
    "\tid: XXXXX-XXX-XXXXXXX-00001\n"
    "\tsystem path: C:\\windows\n"
    "\nHardware:\n"
    "\tboard: Intel Corporation\n"
    "\tC volume: 0x43000000 0xa NTFS total 264212084K free 81646476K (user 81646476K)\n"
    "\nNetwork:\n"
    "Adapters enumeration:\n"
    "\tAdapter name: ADAPTER-0001\n"
    "\tIfIndex (IPv4 interface): 2\n"
    "\tDNS Suffix: DNS-0001\n"
    "\tDescription: Intel(R) Ethernet Connection I219-LM\n"
    "\tFriendly name: KEYWORD-0001 lan\n"
    "\tPhysical address: 02-00-00-00-00-01\n"
    "\tMtu: 1500\n"
    "\n"
    "\nOrvane Software installation:\n"
    "* Current directory (C:\\Users\\USER-0001\\KEYWORD-0001 tools):\n"
    "\t00000020       4753\t07/03/2021  14:05:09\t08/03/2021  09:00:00\tKEYWORD-0001-notes.txt\t ACL: Allow "
    "HOST-0001\\USER-0001 [RWX]; Allow DOMAIN-0001\\ACCOUNT-0001 [R  ]; Allow BUILTIN\\Administrators [RWX]; "
    "Allow NT AUTHORITY\\SYSTEM [RWX]; Allow Everyone [R  ];\n"
    "\t\t\t\tContent:\"notes of KEYWORD-0001\"\n"
    "* Registry installation data:\n"
    "\tInstallLocation: D:\\KEYWORD-0001\\Suite\n"
    "\tVersionMajor: 9\n"
    "* Registry installation directory:\n"
    "\t00000010          0\t01/01/2020  00:00:00\t01/01/2020  00:00:01\ttool.dll\t9.3.1.0\n"
    "a line of KEYWORD-0001's own\n"
    "\n"
    "Redacted: computer name, domain, user, account, product id, hardware address, adapter name, DNS suffix, "
    "keyword\n";

Report Parse(const std::string& utf8) { return ParseReportBody(Utf16FromUtf8(utf8)); }

std::string Rendered(const Report& report) { return Utf8FromUtf16(RenderReportBody(report)); }

Redacted RedactPrivate(PseudonymMap& map) { return RedactReport(Parse(kPrivateBody), {"acme"}, map); }

}  // namespace

TEST(ReportRedact, ReplacesEveryPrivateValueAndKeepsTheRest) {
    PseudonymMap map;
    const Redacted redacted = RedactPrivate(map);
    EXPECT_EQ(Rendered(redacted.report), kRedactedBody);
    EXPECT_FALSE(FindSurvivor(Utf16FromUtf8(kRedactedBody), redacted));
}

TEST(ReportRedact, TheRedactedReportReadsAsTheOriginalWithItsMarker) {
    PseudonymMap map;
    const Report original = Parse(kPrivateBody);
    const Report reread = Parse(Rendered(RedactPrivate(map).report));
    EXPECT_EQ(reread.unrecognised.size(), original.unrecognised.size());
    EXPECT_EQ(reread.lineCount, original.lineCount + 2);
    ASSERT_TRUE(reread.redaction);
    EXPECT_EQ(reread.redaction->line, reread.lineCount);
    EXPECT_EQ(reread.redaction->kinds.size(), 9u);
    EXPECT_EQ(Utf8FromUtf16(RenderReportBody(reread)), kRedactedBody);
    // Sizes, times, attributes and versions as they were.
    const DirectoryEntry& entry = reread.installation.directories[0].entries[0];
    const DirectoryEntry& before = original.installation.directories[0].entries[0];
    EXPECT_EQ(entry.size, before.size);
    EXPECT_EQ(entry.attributes, before.attributes);
    EXPECT_EQ(entry.created.Iso(), before.created.Iso());
    EXPECT_EQ(entry.written.Iso(), before.written.Iso());
}

TEST(ReportRedact, ShowJsonSaysWhatWasReplaced) {
    PseudonymMap map;
    ReportVerdict verdict;
    verdict.state = ReportState::Intact;
    const auto json = ReportToJson(Parse(Rendered(RedactPrivate(map).report)), verdict);
    EXPECT_EQ(json["redaction"].dump(),
              "{\"line\":44,\"kinds\":[\"computer name\",\"domain\",\"user\",\"account\",\"product id\","
              "\"hardware address\",\"adapter name\",\"DNS suffix\",\"keyword\"]}");
    EXPECT_FALSE(ReportToJson(Parse(kPrivateBody), verdict).contains("redaction"));
}

TEST(ReportRedact, AMarkerOnlyWhereRedactWouldWriteIt) {
    EXPECT_TRUE(Parse("x\n\nRedacted: user, keyword\n").redaction);
    EXPECT_TRUE(Parse("x\n\nRedacted: \n").redaction);  // a report with nothing to replace
    for (const char* body : {"x\n\nRedacted: keyword, user\n", "x\n\nRedacted: user, user\n",
                             "x\n\nRedacted: users\n", "x\nRedacted: user\n", "x\n\nRedacted: user\ny\n"}) {
        const Report report = Parse(body);
        EXPECT_FALSE(report.redaction) << body;
        EXPECT_EQ(Rendered(report), body);
    }
}

// The self-check is not a formality: each kind of value put back where it
// stood is found, and named.
TEST(ReportRedact, TheSelfCheckFindsAnyKindLeftBehind) {
    PseudonymMap map;
    const Redacted redacted = RedactPrivate(map);
    const auto leaveBehind = [&](auto restore) {
        Redacted copy = redacted;
        restore(copy.report);
        return FindSurvivor(RenderReportBody(copy.report), copy);
    };
    EXPECT_EQ(leaveBehind([](Report& r) { r.host.netbiosName = "pc-anne"; }), Kind::ComputerName);
    EXPECT_EQ(leaveBehind([](Report& r) { r.host.domain = "CorpNet"; }), Kind::Domain);
    EXPECT_EQ(leaveBehind([](Report& r) { r.program.directory = "C:\\Users\\ANNE.BERG"; }), Kind::User);
    EXPECT_EQ(leaveBehind([](Report& r) { r.installation.directories[0].entries[0].accessList = " Allow X\\jdoe [R  ];"; }),
              Kind::Account);
    EXPECT_EQ(leaveBehind([](Report& r) { r.windows.productId = "12345-oem-0000001-54321"; }), Kind::ProductId);
    EXPECT_EQ(leaveBehind([](Report& r) { r.network.adapters[0].physicalAddress = "00-1a-2b-3c-4d-5e"; }),
              Kind::HardwareAddress);
    EXPECT_EQ(leaveBehind([](Report& r) { r.network.adapters[0].name = "{4d36e972-e325-11ce-bfc1-08002be10318}"; }),
              Kind::AdapterName);
    EXPECT_EQ(leaveBehind([](Report& r) { r.network.adapters[0].dnsSuffix = "OFFICE.ACME-HEALTH.EXAMPLE"; }),
              Kind::DnsSuffix);
    EXPECT_EQ(leaveBehind([](Report& r) { r.unrecognised[0].text = "xACMEx"; }), Kind::Keyword);
}

TEST(ReportRedact, AKeywordWithinAPseudonymOrTheMarkerIsNoSurvivor) {
    PseudonymMap map;
    const Redacted redacted = RedactReport(Parse(kPrivateBody), {"host", "User", "-0001", "computer"}, map);
    const std::string text = Rendered(redacted.report);
    EXPECT_NE(text.find("\tname: HOST-0001 (DOMAIN-0001\\HOST-0001)\n"), std::string::npos) << text;
    // "user" stays in the labels, which are the report's own words.
    EXPECT_NE(text.find("\tuser: USER-0001\n"), std::string::npos) << text;
    const auto survivor = FindSurvivor(RenderReportBody(redacted.report), redacted);
    EXPECT_FALSE(survivor) << KindName(*survivor);
}

TEST(ReportRedact, AKeywordThatThePseudonymsMakeWholeIsASurvivor) {
    // The product id's pseudonym completes, inside another value, a keyword
    // that the original never held: the result would hold the keyword, so
    // nothing is written.
    PseudonymMap map;
    const Redacted redacted =
        RedactReport(Parse("\nWindows:\n\treal version: 10.0 id: 12345-oem-0000001-54321\n"
                           "\tid: 12345-oem-0000001-54321\n"),
                     {"id: xxxxx-xxx-xxxxxxx-00001"}, map);
    EXPECT_NE(Rendered(redacted.report).find("\treal version: 10.0 id: XXXXX-XXX-XXXXXXX-00001\n"), std::string::npos)
        << Rendered(redacted.report);
    EXPECT_EQ(FindSurvivor(RenderReportBody(redacted.report), redacted), Kind::Keyword);
}

TEST(ReportRedact, AValueInAFieldKeptAsItIsIsFound) {
    // A user named like a time's digits cannot be hidden in the times: the
    // check says so instead of writing.
    PseudonymMap map;
    const Redacted redacted =
        RedactReport(Parse("\nHost:\n\tuser: 14:05\n\nOrvane Software installation:\n"
                           "* Current directory (C:\\x):\n"
                           "\t00000020       4753\t07/03/2021  14:05:09\t08/03/2021  09:00:00\ta\tb\n"),
                     {}, map);
    EXPECT_EQ(FindSurvivor(RenderReportBody(redacted.report), redacted), Kind::User);
}

TEST(ReportRedact, TheMapGivesTheSamePseudonymsToTheNextReport) {
    PseudonymMap first;
    RedactPrivate(first);
    const std::string text = first.Text();
    EXPECT_EQ(text.substr(0, text.find('\n', text.find('\n') + 1) + 1),
              "computer name\tPC-ANNE\tHOST-0001\ndomain\tCORPNET\tDOMAIN-0001\n");
    PseudonymMap second;
    std::string problem;
    ASSERT_TRUE(second.Read(text, problem)) << problem;
    EXPECT_EQ(Rendered(RedactPrivate(second).report), kRedactedBody);
    EXPECT_EQ(second.Text(), text);
    // A new value of a kind takes the next number.
    EXPECT_EQ(second.PseudonymOf(Kind::ComputerName, "PC-BOB"), "HOST-0002");
    EXPECT_EQ(second.PseudonymOf(Kind::HardwareAddress, "AA-BB-CC-DD-EE-FF"), "02-00-00-00-00-02");
    EXPECT_EQ(second.PseudonymOf(Kind::ComputerName, "pc-bob"), "HOST-0002");
}

TEST(ReportRedact, AMapFileOfAnotherFormIsRefused) {
    for (const char* text : {"user\tanne\n", "person\tanne\tUSER-0001\n", "user\t\tUSER-0001\n",
                             "user\tanne\tUSER-0001\nuser\tANNE\tUSER-0002\n", "user\ta\tb\tc\n"}) {
        PseudonymMap map;
        std::string problem;
        EXPECT_FALSE(map.Read(text, problem)) << text;
        EXPECT_EQ(problem.substr(0, 5), "line ") << text;
    }
}

TEST(ReportRedact, WellKnownNamesStay) {
    PseudonymMap map;
    const Redacted redacted = RedactReport(
        Parse("\nHost:\n\tname: PC1 (WORKGROUP\\PC1)\n\tuser: bob\n\nOrvane Software installation:\n"
              "* Current directory (C:\\x):\n"
              "\t00000020       4753\t07/03/2021  14:05:09\t08/03/2021  09:00:00\ta\tb ACL: Allow CREATOR OWNER "
              "[RWX]; Allow NT SERVICE\\TrustedInstaller [RWX]; Allow PC1\\Administrator [RWX]; Deny PC1\\eve "
              "[ W ]; Unknown Right ;\n"),
        {}, map);
    EXPECT_EQ(Rendered(redacted.report),
              "\nHost:\n\tname: HOST-0001 (WORKGROUP\\HOST-0001)\n\tuser: USER-0001\n\nOrvane Software "
              "installation:\n* Current directory (C:\\x):\n"
              "\t00000020       4753\t07/03/2021  14:05:09\t08/03/2021  09:00:00\ta\tb ACL: Allow CREATOR OWNER "
              "[RWX]; Allow NT SERVICE\\TrustedInstaller [RWX]; Allow HOST-0001\\Administrator [RWX]; Deny "
              "HOST-0001\\ACCOUNT-0001 [ W ]; Unknown Right ;\n\nRedacted: computer name, user, account\n");
}

TEST(ReportRedact, RedactingTwiceKeepsOneMarker) {
    PseudonymMap map;
    const Report once = Parse(Rendered(RedactPrivate(map).report));
    const Redacted twice = RedactReport(once, {"acme", "user"}, map);
    std::string expected = kRedactedBody;
    expected.replace(expected.find("C:\\Users"), 8, "C:\\KEYWORD-0002s");
    expected.replace(expected.find("C:\\Users"), 8, "C:\\KEYWORD-0002s");
    EXPECT_EQ(Rendered(twice.report), expected);
}

// A keyword may spell a pseudonym or a piece of one ("host-0001", "User-0",
// "-0001"): the first run leaves no such keyword of the customer's behind,
// and the second, with the same map, keeps the pseudonyms it meets whole.
TEST(ReportRedact, RedactingTwiceIsTheSameAsOnceWhenAKeywordSpellsAPieceOfAPseudonym) {
    PseudonymMap map;
    const std::vector<std::string> keywords{"acme", "host-0001", "User-0", "-0001"};
    const Redacted once = RedactReport(Parse(kPrivateBody), keywords, map);
    EXPECT_EQ(Rendered(once.report), kRedactedBody);
    EXPECT_FALSE(FindSurvivor(RenderReportBody(once.report), once));
    EXPECT_TRUE(once.keptPseudonyms.empty());
    const Redacted twice = RedactReport(Parse(kRedactedBody), keywords, map);
    EXPECT_EQ(Rendered(twice.report), kRedactedBody);
    EXPECT_FALSE(FindSurvivor(RenderReportBody(twice.report), twice));
    std::vector<std::string> kept = twice.keptPseudonyms;
    std::sort(kept.begin(), kept.end());
    EXPECT_EQ(kept, (std::vector<std::string>{"02-00-00-00-00-01", "account-0001", "adapter-0001", "dns-0001",
                                              "domain-0001", "host-0001", "keyword-0001", "user-0001",
                                              "xxxxx-xxx-xxxxxxx-00001"}));
}

// A keyword given at the second run is replaced where it stands in the
// customer's text, beside a pseudonym too; the pseudonym stays whole. A
// keyword that the text holds only across a pseudonym's edge ("0001 tools"
// in "KEYWORD-0001 tools") is not cut out of it: the check finds it, and
// nothing would be written.
TEST(ReportRedact, AKeywordBesideAPseudonymIsReplacedNeverAcrossItsEdge) {
    PseudonymMap map;
    RedactPrivate(map);
    const Redacted beside = RedactReport(Parse(kRedactedBody), {"acme", "tools"}, map);
    std::string expected = kRedactedBody;
    for (int place = 0; place < 2; ++place)
        expected.replace(expected.find("KEYWORD-0001 tools"), 18, "KEYWORD-0001 KEYWORD-0002");
    EXPECT_EQ(Rendered(beside.report), expected);
    EXPECT_FALSE(FindSurvivor(RenderReportBody(beside.report), beside));
    const Redacted across = RedactReport(Parse(kRedactedBody), {"0001 TOOLS", "user-0001\\keyword"}, map);
    EXPECT_EQ(Rendered(across.report), kRedactedBody);
    EXPECT_EQ(FindSurvivor(RenderReportBody(across.report), across), Kind::Keyword);
}

// Only the pseudonyms known before the run are kept: where the customer's
// own text spells one that this run makes, it is theirs, and a keyword in
// it is replaced.
TEST(ReportRedact, TextThatSpellsAPseudonymOfThisRunIsTheCustomers) {
    PseudonymMap map;
    const Redacted redacted = RedactReport(Parse("\nHost:\n\tuser: anne\nuser-0001.log\n"), {"0001"}, map);
    EXPECT_EQ(Rendered(redacted.report), "\nHost:\n\tuser: USER-0001\nuser-KEYWORD-0001.log\n\nRedacted: user, keyword\n");
    EXPECT_FALSE(FindSurvivor(RenderReportBody(redacted.report), redacted));
}

TEST(ReportRedact, FoldsCapitalsOfManyScriptsInPlace) {
    EXPECT_EQ(FoldCase("ÀÉÎÕÜ ŁŃŚŹŻ ΑΒΓ ДЖЯ Ё x×Y"), "àéîõü łńśźż αβγ джя ё x×y");
    EXPECT_EQ(FoldCase("\xC3"), "\xC3");  // a cut sequence stays as it is
}

// A name may be as short as "or": it is replaced where it stands as a word
// of its own (the value, a path's component, a word of a file name, beside
// signs such as "-", "_", "(" or "’"), never inside another word ("Orvane",
// "memory", "WORKGROUP", "Corporation", "orders", "Orélie"), and a digit
// joins a word as a letter does ("pc12"). A keyword is replaced anywhere.
TEST(ReportRedact, ANameIsReplacedWhereItStandsAsAWordAKeywordAnywhere) {
    PseudonymMap map;
    const Redacted redacted = RedactReport(
        Parse("\nProgram:\nOrvaneDiagnostics 9.3.1.1042\nin C:\\Users\\or\\Orvane tools\n"
              "\nHost:\n\tname: PC1 (WORKGROUP\\PC1)\n\tuser: or\n"
              "\nHardware:\n\tboard: Intel Corporation\n"
              "\nOrvane Software installation:\n* Current directory (C:\\Users\\OR\\Orvane tools):\n"
              "\t00000020          1\t07/03/2021  14:05:09\t08/03/2021  09:00:00\tor-notes.txt\t\n"
              "\t00000020          2\t07/03/2021  14:05:09\t08/03/2021  09:00:00\tmemory orders.txt\t\n"
              "\t00000020          3\t07/03/2021  14:05:09\t08/03/2021  09:00:00\tnotes (or) or_backup.txt\t\n"
              "\t00000020          4\t07/03/2021  14:05:09\t08/03/2021  09:00:00\tOrélie or’s pc12 PC1.log\t\n"
              "WORKGROUP memory of Orvane, for or\n"),
        {"tool"}, map);
    EXPECT_EQ(Rendered(redacted.report),
              "\nProgram:\nOrvaneDiagnostics 9.3.1.1042\nin C:\\Users\\USER-0001\\Orvane KEYWORD-0001s\n"
              "\nHost:\n\tname: HOST-0001 (WORKGROUP\\HOST-0001)\n\tuser: USER-0001\n"
              "\nHardware:\n\tboard: Intel Corporation\n"
              "\nOrvane Software installation:\n* Current directory (C:\\Users\\USER-0001\\Orvane KEYWORD-0001s):\n"
              "\t00000020          1\t07/03/2021  14:05:09\t08/03/2021  09:00:00\tUSER-0001-notes.txt\t\n"
              "\t00000020          2\t07/03/2021  14:05:09\t08/03/2021  09:00:00\tmemory orders.txt\t\n"
              "\t00000020          3\t07/03/2021  14:05:09\t08/03/2021  09:00:00\tnotes (USER-0001) USER-0001_backup.txt\t\n"
              "\t00000020          4\t07/03/2021  14:05:09\t08/03/2021  09:00:00\tOrélie USER-0001’s pc12 HOST-0001.log\t\n"
              "WORKGROUP memory of Orvane, for USER-0001\n"
              "\nRedacted: computer name, user, keyword\n");
    EXPECT_FALSE(FindSurvivor(RenderReportBody(redacted.report), redacted));
}

// The self-check searches as the redaction replaced: a name where it stands
// as a word (so "or" inside "Orvane" is no survivor, nor is it one right
// after a pseudonym, where it was not a word of its own either), a keyword
// also inside a longer word.
TEST(ReportRedact, TheSelfCheckFindsANameAsAWordAndAKeywordAnywhere) {
    PseudonymMap map;
    const Redacted redacted = RedactReport(
        Parse("\nProgram:\nOrvaneDiagnostics 9.3.1.1042\nin C:\\Users\\or\\tools\n\nHost:\n\tuser: or\n"
              "memory of Orvane\n"),
        {"tool"}, map);
    const auto leaveBehind = [&](const char* directory, const char* line) {
        Redacted copy = redacted;
        copy.report.program.directory = directory;
        copy.report.unrecognised[0].text = line;
        return FindSurvivor(RenderReportBody(copy.report), copy);
    };
    EXPECT_EQ(leaveBehind("C:\\Users\\USER-0001\\KEYWORD-0001s", "memory of Orvane"), std::nullopt);
    EXPECT_EQ(leaveBehind("C:\\Users\\OR\\KEYWORD-0001s", "memory of Orvane"), Kind::User);
    EXPECT_EQ(leaveBehind("C:\\Users\\USER-0001\\KEYWORD-0001s", "memory of Orvane, for Or"), Kind::User);
    EXPECT_EQ(leaveBehind("C:\\Users\\USER-0001\\KEYWORD-0001s", "notes (or).txt"), Kind::User);
    EXPECT_EQ(leaveBehind("C:\\Users\\USER-0001\\KEYWORD-0001s", "USER-0001or and KEYWORD-0001or"), std::nullopt);
    EXPECT_EQ(leaveBehind("C:\\Users\\USER-0001\\KEYWORD-0001s", "in the Toolbox"), Kind::Keyword);
    EXPECT_EQ(leaveBehind("C:\\Users\\USER-0001\\TOOLS", "memory of Orvane"), Kind::Keyword);
}

// A value that reads as a pseudonym (a report redacted before, redacted
// again without its map) says nothing of the customer: it is left as it
// is, and no other value's pseudonym is ever the same text.
TEST(ReportRedact, AValueThatReadsAsAPseudonymIsLeftAsItIs) {
    PseudonymMap map;
    const Redacted redacted = RedactReport(
        Parse("\nHost:\n\tname: HOST-0001 (WORKGROUP\\host-0001)\n\tuser: USER-0001\n\nWindows:\n"
              "\tid: xxxxx-xxx-xxxxxxx-00001\n\nNetwork:\nAdapters enumeration:\n\tAdapter name: ADAPTER-12345\n"
              "\tDNS Suffix: DNS-001\n\tPhysical address: 02-00-00-00-0a-01\n\n"),
        {}, map);
    EXPECT_EQ(Rendered(redacted.report),
              "\nHost:\n\tname: HOST-0001 (WORKGROUP\\host-0001)\n\tuser: USER-0001\n\nWindows:\n"
              "\tid: xxxxx-xxx-xxxxxxx-00001\n\nNetwork:\nAdapters enumeration:\n\tAdapter name: ADAPTER-12345\n"
              "\tDNS Suffix: DNS-0001\n\tPhysical address: 02-00-00-00-0a-01\n\n\nRedacted: DNS suffix\n");
    EXPECT_FALSE(FindSurvivor(RenderReportBody(redacted.report), redacted));
    // The next user is not given the text a value kept holds.
    EXPECT_EQ(map.PseudonymOf(Kind::User, "anne"), "USER-0002");
}
