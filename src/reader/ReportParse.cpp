// Reads a report body into the model. One pass over the lines; each section
// accepts its lines in the report's order only (a stage number that only
// grows), and a line is taken only when the writer would make it again from
// what was read. Whatever is not taken goes to `unrecognised`.
#include <algorithm>
#include <array>
#include <initializer_list>
#include <limits>

#include "format/LineForms.h"
#include "format/RegistryValueText.h"
#include "reader/ReportModelText.h"
#include "reader/ReportRender.h"

namespace report_model {

using namespace lineform;

namespace {

constexpr std::uint32_t kU32 = std::numeric_limits<std::uint32_t>::max();
constexpr std::int64_t kI32Min = std::numeric_limits<std::int32_t>::min();
constexpr std::int64_t kI32Max = std::numeric_limits<std::int32_t>::max();
constexpr std::int64_t kI64Min = std::numeric_limits<std::int64_t>::min();
constexpr std::int64_t kI64Max = std::numeric_limits<std::int64_t>::max();

bool StartsWith(std::string_view text, std::string_view prefix) {
    return text.substr(0, prefix.size()) == prefix;
}
bool EndsWith(std::string_view text, std::string_view suffix) {
    return text.size() >= suffix.size() && text.substr(text.size() - suffix.size()) == suffix;
}
// The rest of `line` after `label`, when it starts with it.
std::optional<std::string_view> After(std::string_view line, std::string_view label) {
    if (!StartsWith(line, label)) return std::nullopt;
    return line.substr(label.size());
}
// "<outer> (<inner>)": the parenthesis found first, or the last one.
struct Parenthesised {
    std::string_view outer;
    std::optional<std::string_view> inner;
};
Parenthesised SplitParenthesised(std::string_view text, bool last) {
    const std::string_view open = kOpenParenthesis.Narrow();
    const std::string_view close = kCloseParenthesis.Narrow();
    const std::size_t at = last ? text.rfind(open) : text.find(open);
    if (at == std::string_view::npos || !EndsWith(text, close) || text.size() < at + open.size() + close.size())
        return {text, std::nullopt};
    return {text.substr(0, at), text.substr(at + open.size(), text.size() - at - open.size() - close.size())};
}

// The text cut at three separators, in order: the three parts before them
// and what follows the last.
std::optional<std::array<std::string_view, 4>> SplitAt(std::string_view text,
                                                        std::initializer_list<std::string_view> separators) {
    std::array<std::string_view, 4> parts;
    std::size_t part = 0;
    for (std::string_view separator : separators) {
        const std::size_t at = text.find(separator);
        if (at == std::string_view::npos) return std::nullopt;
        parts[part++] = text.substr(0, at);
        text.remove_prefix(at + separator.size());
    }
    parts[part] = text;
    return parts;
}

// "0x<hex digits>" of a 32-bit value.
bool IsHex32(std::string_view text) {
    const auto digits = After(text, kHexPrefix.Narrow());
    return digits && ParseUnsigned(*digits, kU32, 16).has_value();
}

std::optional<std::uint32_t> U32(std::string_view text) {
    const auto v = ParseUnsigned(text, kU32);
    if (!v) return std::nullopt;
    return static_cast<std::uint32_t>(*v);
}

// Sections in report order; a heading is taken only after the ones before.
enum Section { kNone, kProgram, kHost, kWindows, kHardware, kNetwork, kInstallation };

struct SectionHeading {
    Section section;
    std::string_view word;
};
constexpr SectionHeading kSectionHeadings[] = {
    {kProgram, kProgramHeading.Narrow()},   {kHost, kHostHeading.Narrow()},
    {kWindows, kWindowsHeading.Narrow()},   {kHardware, kHardwareHeading.Narrow()},
    {kNetwork, kNetworkHeading.Narrow()},   {kInstallation, kInstallationHeading.Narrow()},
};

template <typename R>  // Report or const Report
auto& HeadingOf(R& report, Section section) {
    switch (section) {
        case kProgram: return report.program.heading;
        case kHost: return report.host.heading;
        case kWindows: return report.windows.heading;
        case kHardware: return report.hardware.heading;
        case kNetwork: return report.network.heading;
        case kInstallation: case kNone: break;
    }
    return report.installation.heading;
}

class Parser {
public:
    explicit Parser(const std::vector<std::string_view>& lines) : lines_(lines) {}

    Report Run() {
        report_.lineCount = lines_.size();
        std::size_t i = 0;
        if (!lines_.empty() && StartsWith(lines_[0], kHeaderLead.Narrow())) {
            report_.header.present = true;
            report_.header.text = lines_[0];
            i = 1;
            report_.header.blankLineAfter = lines_.size() > 1 && lines_[1].empty();
            if (report_.header.blankLineAfter) i = 2;
        }
        for (; i < lines_.size(); ++i) {
            const std::string_view line = lines_[i];
            lineNumber_ = i + 1;
            if (line.empty()) {
                if (CloseAdapter()) continue;
                lineNumber_ = i + 2;
                if (i + 1 < lines_.size() && TakeHeading(lines_[i + 1], true)) {
                    ++i;
                    continue;
                }
                lineNumber_ = i + 1;
                Unrecognised(i);
                continue;
            }
            if (TakeHeading(line, false)) continue;
            if (const std::size_t end = DisplacedLinesEnd(i)) {
                for (; i < end; ++i) Unrecognised(i);
                --i;
                continue;
            }
            if (!TakeSectionLine(line)) Unrecognised(i);
        }
        return std::move(report_);
    }

private:
    void Unrecognised(std::size_t index) {
        report_.unrecognised.push_back({index + 1, std::string(lines_[index])});
    }

    // A heading that was already taken, again: a value's line break put it
    // there (Windows allows any character in a registry string, and the
    // report prints values raw). The lines that follow and read as that
    // heading's own were displaced with it; they end at the first line they
    // could not be, which is where the true lines resume. The index after
    // them; 0 when the line is no repeated heading.
    std::size_t DisplacedLinesEnd(std::size_t index) {
        Parser displaced(lines_);
        if (!displaced.RepeatHeading(*this, lines_[index])) return 0;
        std::size_t end = index + 1;
        while (end < lines_.size() && !lines_[end].empty() && displaced.TakeSectionLine(lines_[end])) ++end;
        return end;
    }

    // Takes `line` as a heading that `original` has already passed.
    bool RepeatHeading(const Parser& original, std::string_view line) {
        if (original.section_ == kInstallation && line == kRegistryDataHeading.Narrow() &&
            original.report_.installation.registryDataHeading) {
            section_ = kInstallation;
            stage_ = 2;
            return TakeInstallation(line);
        }
        for (const SectionHeading& h : kSectionHeadings)
            if (line == h.word && HeadingOf(original.report_, h.section).present) return TakeHeading(line, false);
        return false;
    }

    bool TakeHeading(std::string_view line, bool blankBefore) {
        for (const SectionHeading& c : kSectionHeadings) {
            if (c.section <= section_ || line != c.word) continue;
            Heading& heading = HeadingOf(report_, c.section);
            heading.present = true;
            heading.blankLineBefore = blankBefore;
            heading.line = lineNumber_;
            section_ = c.section;
            stage_ = 0;
            openAdapter_ = false;
            return true;
        }
        return false;
    }

    // Takes the line as the field of this stage when the stage is still
    // ahead and the writer gives the same line back.
    template <typename Store>
    bool Field(int stage, bool ok, Store store) {
        if (!ok || stage <= stage_) return false;
        store();
        stage_ = stage;
        return true;
    }

    bool TakeSectionLine(std::string_view line) {
        switch (section_) {
            case kProgram: return TakeProgram(line);
            case kHost: return TakeHost(line);
            case kWindows: return TakeWindows(line);
            case kHardware: return TakeHardware(line);
            case kNetwork: return TakeNetwork(line);
            case kInstallation: return TakeInstallation(line);
            case kNone: break;
        }
        return false;
    }

    bool TakeProgram(std::string_view line) {
        ProgramSection& p = report_.program;
        if (auto dir = After(line, kProgramDirectory.Narrow())) return Field(2, true, [&] {
                p.directory = *dir;
                p.directoryLine = lineNumber_;
            });
        if (line == kAdministratorLine.Narrow()) return Field(3, true, [&] {
                p.elevated = true;
                p.elevatedLine = lineNumber_;
            });
        const std::size_t blank = line.rfind(' ');
        if (line[0] == '\t' || blank == std::string::npos) return false;
        return Field(1, true, [&] {
            p.name = line.substr(0, blank);
            p.version = line.substr(blank + 1);
            p.nameLine = lineNumber_;
        });
    }

    bool TakeHost(std::string_view line) {
        HostSection& h = report_.host;
        if (auto user = After(line, kUser.Narrow())) return Field(2, true, [&] { h.user = *user; });
        auto value = After(line, kHostName.Narrow());
        if (!value) return false;
        const auto [outer, inner] = SplitParenthesised(*value, false);
        if (!inner) return false;
        const std::size_t slash = inner->find(kDomainSeparator.Narrow());
        if (slash == std::string::npos) return false;
        HostSection parsed;
        parsed.netbiosName = outer;
        parsed.domain = inner->substr(0, slash);
        parsed.wmiName = inner->substr(slash + kDomainSeparator.Narrow().size());
        return Field(1, HostNameLine(parsed) == line, [&] {
            h.hasNameLine = true;
            h.netbiosName = parsed.netbiosName;
            h.domain = parsed.domain;
            h.wmiName = parsed.wmiName;
        });
    }

    bool TakeWindows(std::string_view line) {
        WindowsSection& w = report_.windows;
        if (auto v = After(line, kVersionReported.Narrow())) {
            const auto [outer, inner] = SplitParenthesised(*v, true);
            if (!inner) return false;
            WindowsSection parsed;
            parsed.versionLabel = outer;
            parsed.edition = *inner;
            return Field(1, VersionReportedLine(parsed) == line, [&] {
                w.hasVersionReported = true;
                w.versionLabel = parsed.versionLabel;
                w.edition = parsed.edition;
            });
        }
        if (auto v = After(line, kRealVersion.Narrow())) return Field(2, true, [&] { w.realVersion = *v; });
        if (auto v = After(line, kProductId.Narrow())) return Field(3, true, [&] { w.productId = *v; });
        if (auto v = After(line, kSystemPath.Narrow())) return Field(4, true, [&] { w.systemPath = *v; });
        if (auto v = After(line, kProgramFilesPath.Narrow()))
            return Field(5, true, [&] { w.programFilesPath = *v; });
        if (auto v = After(line, kCommonAppDataPath.Narrow()))
            return Field(6, true, [&] { w.commonAppDataPath = *v; });
        return false;
    }

    bool TakeHardware(std::string_view line) {
        HardwareSection& h = report_.hardware;
        if (auto v = After(line, kSystemBits.Narrow())) {
            if (!EndsWith(*v, kBitsUnit.Narrow())) return false;
            const auto bits = U32(v->substr(0, v->size() - kBitsUnit.Narrow().size()));
            return Field(1, bits.has_value(), [&] { h.bits = bits; });
        }
        if (auto v = After(line, kBios.Narrow())) return Field(2, true, [&] { h.bios = *v; });
        if (auto v = After(line, kBoard.Narrow())) return Field(3, true, [&] { h.board = *v; });
        if (auto v = After(line, kProcessorCount.Narrow())) {
            const auto n = U32(*v);
            return Field(4, n.has_value(), [&] { h.processorCount = n; });
        }
        if (auto v = After(line, kProcessor.Narrow())) return TakeProcessor(line, *v);
        if (auto v = After(line, kActiveProcessorMask.Narrow())) {
            const auto n = U32(*v);
            return Field(6, n.has_value(), [&] { h.activeProcessorMask = n; });
        }
        if (auto v = After(line, kPageSize.Narrow())) {
            const auto n = U32(*v);
            return Field(7, n.has_value(), [&] { h.pageSize = n; });
        }
        if (auto v = After(line, kApplicationAddresses.Narrow())) {
            const std::size_t dash = v->find('-');
            if (dash == std::string::npos) return false;
            AddressRange range{std::string(v->substr(0, dash)), std::string(v->substr(dash + 1))};
            const bool ok = IsHex32(range.lowest) && IsHex32(range.highest);
            return Field(8, ok, [&] { h.applicationAddresses = range; });
        }
        if (auto v = After(line, kMemory.Narrow())) return TakeMemory(line, *v);
        if (auto v = After(line, kVolume.Narrow())) return TakeVolume(line, *v);
        return false;
    }

    bool TakeProcessor(std::string_view line, std::string_view v) {
        const auto [outer, inner] = SplitParenthesised(v, false);
        if (!inner) return false;
        const std::size_t dot = inner->find('.');
        if (dot == std::string::npos) return false;
        const auto arch = ParseUnsigned(outer, 0xFFFF);
        const auto level = ParseUnsigned(inner->substr(0, dot), 0xFFFF);
        const auto revision = ParseUnsigned(inner->substr(dot + 1), 0xFFFF);
        if (!arch || !level || !revision) return false;
        ProcessorLine p{static_cast<std::uint32_t>(*arch), static_cast<std::uint32_t>(*level),
                        static_cast<std::uint32_t>(*revision)};
        return Field(5, ProcessorLineText(p) == line, [&] { report_.hardware.processor = p; });
    }

    bool TakeMemory(std::string_view line, std::string_view v) {
        // "<n>K physical, <n>K virtual, <n>K paging"
        const auto parts = SplitAt(v, {kMemoryPhysical.Narrow(), kMemoryVirtual.Narrow(), kMemoryPaging.Narrow()});
        if (!parts || !(*parts)[3].empty()) return false;
        const auto physical = ParseSigned((*parts)[0], kI64Min, kI64Max);
        const auto virt = ParseSigned((*parts)[1], kI64Min, kI64Max);
        const auto paging = ParseSigned((*parts)[2], kI64Min, kI64Max);
        if (!physical || !virt || !paging) return false;
        MemoryLine m{*physical, *virt, *paging};
        return Field(9, MemoryLineText(m) == line, [&] { report_.hardware.memory = m; });
    }

    bool TakeVolume(std::string_view line, std::string_view v) {
        // "0x<serial> 0x<flags> <fs> total <n>K free <n>K (user <n>K)"
        const std::size_t first = v.find(' ');
        const std::size_t second = first == std::string::npos ? first : v.find(' ', first + 1);
        const std::size_t total = v.rfind(kVolumeTotal.Narrow());
        if (second == std::string::npos || total == std::string::npos || total < second) return false;
        const auto counts = SplitAt(v.substr(total + kVolumeTotal.Narrow().size()),
                                    {kVolumeFree.Narrow(), kVolumeUser.Narrow(), kVolumeEnd.Narrow()});
        if (!counts || !(*counts)[3].empty()) return false;
        VolumeLine vol;
        vol.serial = v.substr(0, first);
        vol.flags = v.substr(first + 1, second - first - 1);
        vol.fileSystem = v.substr(second + 1, total - second - 1);
        const auto t = ParseSigned((*counts)[0], kI64Min, kI64Max);
        const auto f = ParseSigned((*counts)[1], kI64Min, kI64Max);
        const auto u = ParseSigned((*counts)[2], kI64Min, kI64Max);
        const bool hex = IsHex32(vol.serial) && IsHex32(vol.flags);
        if (!t || !f || !u || !hex) return false;
        vol.totalK = *t;
        vol.freeK = *f;
        vol.userK = *u;
        return Field(10, VolumeLineText(vol) == line, [&] {
            report_.hardware.volume = vol;
            report_.hardware.volumeLine = lineNumber_;
        });
    }

    // --- Network ---------------------------------------------------------

    bool CloseAdapter() {
        if (section_ != kNetwork || !openAdapter_) return false;
        report_.network.adapters.back().closingBlankLine = true;
        openAdapter_ = false;
        return true;
    }

    bool TakeNetwork(std::string_view line) {
        NetworkSection& n = report_.network;
        if (line == kAllocationFailure.Narrow()) return Field(1, true, [&] { n.allocationFailed = true; });
        if (auto v = After(line, kEnumerationError.Narrow())) {
            const auto code = ParseSigned(*v, kI32Min, kI32Max);
            return Field(2, code.has_value(), [&] { n.enumerationError = code; });
        }
        if (line == kNoAddressesFound.Narrow()) return Field(3, true, [&] { n.noAddressesFound = true; });
        if (auto v = After(line, kErrorText.Narrow())) return Field(4, true, [&] { n.errorText = *v; });
        if (line == kAdaptersHeading.Narrow()) return Field(5, true, [&] { n.enumerationHeading = true; });
        if (auto v = After(line, kAdapterName.Narrow())) {
            if (stage_ < 5) stage_ = 5;
            Adapter adapter;
            adapter.name = *v;
            adapter.closingBlankLine = false;
            adapter.line = lineNumber_;
            n.adapters.push_back(std::move(adapter));
            openAdapter_ = true;
            adapterStage_ = 0;
            return true;
        }
        return openAdapter_ && TakeAdapterLine(line, n.adapters.back());
    }

    template <typename Store>
    bool AdapterField(int stage, bool ok, Store store) {
        if (!ok || stage <= adapterStage_) return false;
        store();
        adapterStage_ = stage;
        return true;
    }

    // An adapter's lines come in their order, so a line is first held
    // against the forms that may still follow: the ones before can no longer
    // take it (AdapterField), and a large report has thousands of adapters.
    bool Passed(int stage) const { return stage <= adapterStage_; }

    bool TakeCount(std::string_view line, int stage, std::string_view what, std::optional<std::uint64_t>& slot) {
        if (Passed(stage)) return false;
        std::optional<std::uint64_t> count;
        // "\tNo <what>" or "\tNumber of <what>: <n>", taken apart in place.
        const std::string_view separator = kCountSeparator.Narrow();
        if (auto v = After(line, kNoCount.Narrow()); v && *v == what)
            count = 0;
        else if (auto v = After(line, kNumberOf.Narrow()); v && StartsWith(*v, what) &&
                                                           StartsWith(v->substr(what.size()), separator))
            count = ParseUnsigned(v->substr(what.size() + separator.size()), kI32Max);
        if (!count || CountLine(count, what) != line) return false;
        return AdapterField(stage, true, [&] { slot = count; });
    }

    template <typename Number>
    bool TakeNumber(std::string_view line, std::string_view label, int stage, std::optional<Number>& slot) {
        if (Passed(stage)) return false;
        auto v = After(line, label);
        if (!v) return false;
        std::optional<Number> value;
        if constexpr (std::is_signed_v<Number>) {
            if (auto n = ParseSigned(*v, kI32Min, kI32Max)) value = static_cast<Number>(*n);
        } else {
            if (auto n = ParseUnsigned(*v, kU32)) value = static_cast<Number>(*n);
        }
        return AdapterField(stage, value.has_value(), [&] { slot = value; });
    }

    bool TakeText(std::string_view line, std::string_view label, int stage, std::optional<std::string>& slot) {
        if (Passed(stage)) return false;
        auto v = After(line, label);
        return v && AdapterField(stage, true, [&] { slot = *v; });
    }

    bool TakeAdapterLine(std::string_view line, Adapter& a) {
        if (TakeNumber(line, kIfIndex.Narrow(), 1, a.ifIndex)) return true;
        if (TakeCount(line, 2, kUnicastAddresses.Narrow(), a.unicastCount)) return true;
        if (TakeCount(line, 3, kAnycastAddresses.Narrow(), a.anycastCount)) return true;
        if (TakeCount(line, 4, kMulticastAddresses.Narrow(), a.multicastCount)) return true;
        if (TakeCount(line, 5, kDnsServerAddresses.Narrow(), a.dnsServerCount)) return true;
        if (TakeText(line, kDnsSuffix.Narrow(), 6, a.dnsSuffix)) return true;
        if (TakeText(line, kDescription.Narrow(), 7, a.description)) return true;
        if (TakeText(line, kFriendlyName.Narrow(), 8, a.friendlyName)) return true;
        if (TakeText(line, kPhysicalAddress.Narrow(), 9, a.physicalAddress)) return true;
        if (TakeNumber(line, kFlags.Narrow(), 10, a.flags)) return true;
        if (TakeNumber(line, kMtu.Narrow(), 11, a.mtu)) return true;
        if (TakeNumber(line, kIfType.Narrow(), 12, a.ifType)) return true;
        if (TakeNumber(line, kOperStatus.Narrow(), 13, a.operStatus)) return true;
        if (TakeNumber(line, kIpv6IfIndex.Narrow(), 14, a.ipv6IfIndex)) return true;
        if (auto v = After(line, kZoneIndices.Narrow())) {
            std::vector<std::uint32_t> zones;
            std::string_view rest = *v;
            while (!rest.empty()) {
                const std::size_t blank = rest.find(' ');
                if (blank == std::string_view::npos) return false;
                const auto zone = ParseUnsigned(rest.substr(0, blank), kU32, 16);
                if (!zone) return false;
                zones.push_back(static_cast<std::uint32_t>(*zone));
                rest.remove_prefix(blank + 1);
            }
            return AdapterField(15, true, [&] { a.zoneIndices = std::move(zones); });
        }
        return TakeCount(line, 16, kPrefixEntries.Narrow(), a.prefixCount);
    }

    // --- Installation ----------------------------------------------------

    // Stages: directory headings 1, 2, 3 (registry data), 4-10 (values),
    // 11, 12, 13.
    bool TakeInstallation(std::string_view line) {
        InstallationSection& inst = report_.installation;
        if (openDirectory_ && TakeEntryLine(line, inst.directories.back())) return true;
        struct DirectoryForm {
            DirectoryKind kind;
            int stage;
        };
        static constexpr DirectoryForm forms[] = {
            {DirectoryKind::Current, 1},           {DirectoryKind::Standard, 2},
            {DirectoryKind::Registry, 11},         {DirectoryKind::SharedParameters, 12},
            {DirectoryKind::SharedBatch, 13},
        };
        for (const DirectoryForm& form : forms) {
            Directory d;
            d.kind = form.kind;
            d.line = lineNumber_;
            if (form.kind != DirectoryKind::Registry) {
                // "* <title> (<path>):"
                auto rest = After(line, kDirectoryLead.Narrow());
                if (rest) rest = After(*rest, DirectoryTitle(form.kind));
                if (rest) rest = After(*rest, kDirectoryPathOpen.Narrow());
                if (!rest || !EndsWith(*rest, kDirectoryPathClose.Narrow())) continue;
                d.path = rest->substr(0, rest->size() - kDirectoryPathClose.Narrow().size());
            }
            if (DirectoryHeadingLine(d) != line) continue;
            if (form.kind == DirectoryKind::Registry) {
                for (const RegistryValue& v : inst.registryValues)
                    if (v.name == Narrow(kInstallLocationValue)) d.path = v.text;
            }
            return Field(form.stage, true, [&] {
                // Room for the listing at once: a vector that doubles as it
                // grows holds both buffers while it moves, for a large
                // listing most of the reader's memory.
                d.entries.reserve(IndentedLinesAfter(lineNumber_));
                inst.directories.push_back(std::move(d));
                openDirectory_ = true;
            });
        }
        if (line == kRegistryDataHeading.Narrow())
            return Field(3, true, [&] {
                inst.registryDataHeading = true;
                inst.registryDataLine = lineNumber_;
                openDirectory_ = false;
            });
        if (!inst.registryDataHeading || stage_ < 3 || stage_ > 10) return false;
        for (std::size_t k = 0; k < kInstallationValues.size(); ++k) {
            const InstallationValue& known = kInstallationValues[k];
            std::string label(1, '\t');
            label += Narrow(known.name) + kRegistryValueSeparator.narrow;
            auto v = After(line, label);
            if (!v) continue;
            RegistryValue value;
            value.name = Narrow(known.name);
            value.line = lineNumber_;
            if (known.format == RegistryValueFormat::kNumber) {
                const auto n = ParseSigned(*v, kI32Min, kI32Max);
                if (!n) return false;
                value.number = static_cast<std::int32_t>(*n);
            } else {
                value.text = *v;
            }
            return Field(4 + static_cast<int>(k), true, [&] { inst.registryValues.push_back(std::move(value)); });
        }
        return false;
    }

    // The lines after line `number` (1-based) that start with a tab.
    std::size_t IndentedLinesAfter(std::size_t number) const {
        std::size_t count = 0;
        for (std::size_t i = number; i < lines_.size() && !lines_[i].empty() && lines_[i][0] == '\t'; ++i) ++count;
        return count;
    }

    bool TakeEntryLine(std::string_view line, Directory& dir) {
        if (auto v = After(line, kContentLead.Narrow())) {
            const std::string_view end = kContentEnd.Narrow();
            if (dir.entries.empty() || dir.entries.back().content || !EndsWith(*v, end) || !lastWasEntry_) return false;
            dir.entries.back().content = v->substr(0, v->size() - end.size());
            lastWasEntry_ = false;
            return true;
        }
        lastWasEntry_ = false;
        if (line.size() < 20 || line[0] != '\t' || line[9] != ' ') return false;
        // "\t" head "\t" created "\t" written "\t" name "\t" rest
        std::size_t tabs[5];
        std::size_t from = 0;
        for (std::size_t& tab : tabs) {
            tab = line.find('\t', from);
            if (tab == std::string::npos) return false;
            from = tab + 1;
        }
        DirectoryEntry e;
        std::uint32_t attributes = 0;
        for (char c : std::string_view(line).substr(1, 8)) {
            const int digit = c >= '0' && c <= '9' ? c - '0' : c >= 'a' && c <= 'f' ? c - 'a' + 10 : -1;
            if (digit < 0) return false;
            attributes = attributes << 4 | static_cast<std::uint32_t>(digit);
        }
        std::string_view sizeText = std::string_view(line).substr(10, tabs[1] - 10);
        while (!sizeText.empty() && sizeText[0] == ' ') sizeText.remove_prefix(1);
        const auto size = ParseSigned(sizeText, kI32Min, kI32Max);
        if (!size) return false;
        e.attributes = attributes;
        e.size = static_cast<std::int32_t>(*size);
        const auto created = CalendarStamp::FromPrinted(line.substr(tabs[1] + 1, tabs[2] - tabs[1] - 1));
        const auto written = CalendarStamp::FromPrinted(line.substr(tabs[2] + 1, tabs[3] - tabs[2] - 1));
        if (!created || !written) return false;
        e.created = *created;
        e.written = *written;
        e.name = line.substr(tabs[3] + 1, tabs[4] - tabs[3] - 1);
        std::string_view rest = line.substr(tabs[4] + 1);
        constexpr std::string_view acl = kAccessList.Narrow();
        const std::size_t aclAt = rest.find(acl);
        if (aclAt != std::string::npos) {
            e.accessList = rest.substr(aclAt + acl.size());
            rest = rest.substr(0, aclAt);
        }
        e.version = rest;
        e.line = lineNumber_;
        rendered_.clear();
        AppendEntryLine(rendered_, e);
        if (rendered_ != line) return false;
        dir.entries.push_back(std::move(e));
        lastWasEntry_ = true;
        return true;
    }

    const std::vector<std::string_view>& lines_;
    std::size_t lineNumber_ = 0;  // 1-based, of the line being read
    Report report_;
    Section section_ = kNone;
    int stage_ = 0;
    bool openAdapter_ = false;
    int adapterStage_ = 0;
    bool openDirectory_ = false;
    bool lastWasEntry_ = false;
    std::string rendered_;  // the entry line read, as the writer puts it
};

// Splits the body at its line feeds; a CR before a line feed belongs to the
// break. The convention is the one most breaks use; the others are listed.
// The body is split as UTF-8, converted in one go: a line feed or a CR is
// never part of a longer sequence, and a surrogate pair never spans a line.
std::vector<std::string_view> SplitLines(std::string_view body, LineBreaks& breaks) {
    std::vector<std::string_view> lines;
    std::size_t crlfCount = 0;
    std::size_t start = 0;
    for (std::size_t i = body.find('\n'); i != std::string_view::npos; i = body.find('\n', i + 1)) {
        const bool cr = i > start && body[i - 1] == '\r';
        lines.push_back(body.substr(start, i - start - (cr ? 1 : 0)));
        crlfCount += cr;
        start = i + 1;
    }
    const std::size_t breakCount = lines.size();
    breaks.finalLineBreak = start == body.size();
    if (!breaks.finalLineBreak) lines.push_back(body.substr(start));
    breaks.crlf = breakCount == 0 || crlfCount * 2 >= breakCount;
    // A line had a CR LF when a CR stands right after it, within the body.
    const auto hadCr = [&](const std::string_view& line) {
        return line.data() + line.size() < body.data() + body.size() && line.data()[line.size()] == '\r';
    };
    if (crlfCount != (breaks.crlf ? breakCount : 0))
        for (std::size_t i = 0; i < breakCount; ++i)
            if (hadCr(lines[i]) != breaks.crlf) breaks.exceptions.push_back(i + 1);
    return lines;
}

// The kinds a redaction marker names, when `line` is one: known kinds, each
// once, in their order, as RedactionLine() would write them.
std::optional<Redaction> ReadRedactionLine(std::string_view line) {
    auto rest = After(line, kRedactedLead.Narrow());
    if (!rest) return std::nullopt;
    Redaction redaction;
    if (rest->empty()) return redaction;  // nothing found to replace
    std::size_t next = 0;  // kinds before this one are behind us
    while (true) {
        const std::size_t end = rest->find(kRedactedSeparator.Narrow());
        const std::string_view kind = rest->substr(0, end);
        const auto* known = std::find(std::begin(kRedactionKinds) + next, std::end(kRedactionKinds), kind);
        if (known == std::end(kRedactionKinds)) return std::nullopt;
        next = static_cast<std::size_t>(known - std::begin(kRedactionKinds)) + 1;
        redaction.kinds.emplace_back(kind);
        if (end == std::string_view::npos) break;
        rest = rest->substr(end + kRedactedSeparator.Narrow().size());
    }
    return redaction;
}

}  // namespace

Report ParseReportBody(std::u16string_view body) {
    return ParseReportUtf8(Utf8FromUtf16(body));
}

Report ParseReportUtf8(std::string text) {
    LineBreaks breaks;
    std::vector<std::string_view> lines = SplitLines(text, breaks);
    // A redacted report ends with an empty line and the marker.
    std::optional<Redaction> redaction;
    if (lines.size() >= 2 && lines[lines.size() - 2].empty()) redaction = ReadRedactionLine(lines.back());
    const std::size_t lineCount = lines.size();
    if (redaction) {
        redaction->line = lineCount;
        lines.resize(lineCount - 2);
    }
    Report report = Parser(lines).Run();
    report.lineCount = lineCount;
    report.redaction = std::move(redaction);
    report.lineBreaks = std::move(breaks);
    return report;
}

}  // namespace report_model
