-- id: suite.registry-version
-- severity: warning
-- title: The installer's version in the registry differs from the version of the suite's files
-- title.fr: La version de l'installeur dans le registre diffère de celle des fichiers de la suite
-- remedy: Repair the installation so that the registry and the files agree; an upgrade or an uninstall may otherwise fail.
-- remedy.fr: Réparer l'installation pour que le registre et les fichiers concordent ; sinon une mise à jour ou une désinstallation peut échouer.
-- needs: installation, registry data
-- why: The installer writes VersionMajor, VersionMinor, VersionRevision and
--   VersionBuildReleaseRevision when it installs the files. Read in that order they make the product
--   version that most of the suite's files carry; when they do not, the files and the installer's
--   records come from different releases (a failed upgrade, files copied over an older
--   installation), and the next upgrade goes by the wrong version.
WITH parts AS (
  SELECT report,
         max(CASE name WHEN 'VersionMajor' THEN number END) AS major,
         max(CASE name WHEN 'VersionMinor' THEN number END) AS minor,
         max(CASE name WHEN 'VersionRevision' THEN number END) AS revision,
         max(CASE name WHEN 'VersionBuildReleaseRevision' THEN number END) AS build,
         min(CASE WHEN name LIKE 'Version%' AND number IS NOT NULL THEN line END) AS line
  FROM registry_values GROUP BY report
),
registry AS (
  SELECT report, line,
         major || coalesce('.' || minor || coalesce('.' || revision || coalesce('.' || build, ''), ''), '') AS version
  FROM parts WHERE major IS NOT NULL
),
usual AS (
  SELECT report, version FROM (
    SELECT report, version, row_number() OVER (PARTITION BY report ORDER BY count(*) DESC, version DESC) AS rank
    FROM entries
    WHERE directory IN ('standard', 'registry') AND version <> '' AND attributes & 16 = 0
    GROUP BY report, version)
  WHERE rank = 1
)
SELECT r.report, r.line, 'the registry gives ' || r.version || ', the suite''s files carry ' || u.version
FROM registry r JOIN usual u ON u.report = r.report
WHERE u.version <> r.version AND u.version NOT LIKE r.version || '.%';
