-- id: suite.mixed-versions
-- severity: warning
-- title: The suite's files carry more than one product version
-- title.fr: Les fichiers de la suite portent plusieurs versions de produit
-- remedy: A partial upgrade: repair the installation, or reinstall the suite in the version most files carry.
-- remedy.fr: Mise à jour partielle : réparer l'installation, ou réinstaller la suite dans la version que portent la plupart des fichiers.
-- needs: installation
-- why: Every file of one release carries the release's product version. Files of the installation
--   directories (standard and the one the registry names) that carry another version than most of
--   them are left over from another release: an upgrade that stopped half-way, or a file copied in by
--   hand. Files without a version are left out here (suite.unversioned-file looks at them).
WITH versioned AS (
  SELECT report, line, name, version FROM entries
  WHERE directory IN ('standard', 'registry') AND version <> '' AND attributes & 16 = 0
),
counted AS (
  SELECT report, version, count(*) AS files FROM versioned GROUP BY report, version
),
usual AS (
  SELECT report, version, files, total FROM (
    SELECT report, version, files, sum(files) OVER (PARTITION BY report) AS total,
           row_number() OVER (PARTITION BY report ORDER BY files DESC, version DESC) AS rank
    FROM counted)
  WHERE rank = 1
)
SELECT v.report, v.line,
       v.name || ' carries ' || v.version || ' where ' || u.files || ' of the suite''s ' || u.total ||
       ' versioned files carry ' || u.version
FROM versioned v JOIN usual u ON u.report = v.report
WHERE v.version <> u.version;
