// What a mail program or a file transfer did to a report that is not intact,
// and the report again when undoing it gives back a body whose checksum the
// trailer states. The checksum proves such a restoration exact; nothing is
// ever "repaired" by recomputing it.
#pragma once

#include <optional>
#include <string>
#include <string_view>

struct TransitDiagnosis {
    // What happened, where it can be known: "re-encoded as UTF-8",
    // "line breaks converted from CR LF to LF", "truncated after 1000 bytes",
    // "3 characters replaced by U+FFFD"...; empty when nothing is recognised,
    // for an intact report, and for a file that does not look like a report.
    std::string damage;
    // Whether undoing the damage gives an intact report.
    bool restorable = false;
    // The report's bytes with the damage undone, only when they are intact
    // and were asked for (Restore::Yes).
    std::optional<std::string> restored;
    std::string undone;  // what was undone to restore it: "the UTF-8 re-encoding, ..."
};

// Whether the restored report is made: only repair, which writes it, needs
// it. Without it the search holds nothing the size of the file, whatever
// the file's size (check and show of a 100 MB report stay near its size).
enum class Restore { No, Yes };

TransitDiagnosis DiagnoseTransitDamage(std::string_view bytes, Restore restore = Restore::Yes);
