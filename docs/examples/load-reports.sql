-- Loads reports.jsonl (the output of reportcheck collect) into SQLite, one
-- row per report. JSON Lines hold no unit separator (0x1F), so each whole
-- line lands in the one column.
CREATE TABLE reports(doc TEXT);
.mode ascii
.separator "\037" "\n"
.import reports.jsonl reports
.mode list
.separator "|" "\n"
