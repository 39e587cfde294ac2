-- Every machine whose standard installation directory holds a file in
-- another version than most machines have. Each machine counts once, by
-- its latest intact report (reports.latest): an altered report, or one
-- older than the machine's latest, is left out. Run on a database made by
-- reportcheck collect --db: sqlite3 fleet.db < other-versions.sql
WITH latest AS (
  SELECT r.host_name, e.name, e.version
  FROM entries e JOIN reports r USING (report)
  WHERE e.directory = 'standard' AND r.verdict = 'intact' AND r.latest = 1
),
counted AS (
  SELECT name, version, count(*) AS machines FROM latest GROUP BY name, version
)
SELECT host_name, name, version
FROM latest l
WHERE version NOT IN (SELECT version FROM counted c WHERE c.name = l.name AND c.machines =
                        (SELECT max(machines) FROM counted m WHERE m.name = l.name))
ORDER BY host_name, name;
