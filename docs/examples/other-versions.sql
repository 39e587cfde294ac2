-- Every machine whose standard installation directory holds a file in
-- another version than most machines have.
WITH files AS (
  SELECT json_extract(r.doc, '$.report.host.netbiosName') AS machine,
         json_extract(e.value, '$.name') AS name,
         json_extract(e.value, '$.version') AS version
  FROM reports r,
       json_each(r.doc, '$.report.installation.directories') d,
       json_each(d.value, '$.entries') e
  WHERE json_extract(d.value, '$.kind') = 'standard'
),
counted AS (
  SELECT name, version, count(*) AS machines FROM files GROUP BY name, version
),
usual AS (
  SELECT name, version FROM counted c
  WHERE machines = (SELECT max(machines) FROM counted m WHERE m.name = c.name)
)
SELECT f.machine, f.name, f.version
FROM files f
WHERE f.version NOT IN (SELECT version FROM usual u WHERE u.name = f.name)
ORDER BY f.machine, f.name;
