-- Every machine whose standard installation directory holds a file in
-- another version than most machines have. Run on a database made by
-- reportcheck collect --db: sqlite3 fleet.db < other-versions.sql
WITH counted AS (
  SELECT name, version, count(*) AS machines
  FROM entries WHERE directory = 'standard' GROUP BY name, version
)
SELECT r.host_name, e.name, e.version
FROM entries e JOIN reports r USING (report)
WHERE e.directory = 'standard'
  AND e.version NOT IN (SELECT version FROM counted c WHERE c.name = e.name AND c.machines =
                          (SELECT max(machines) FROM counted m WHERE m.name = e.name))
ORDER BY r.host_name, e.name;
