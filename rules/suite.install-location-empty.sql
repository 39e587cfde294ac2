-- id: suite.install-location-empty
-- severity: error
-- title: InstallLocation names a directory with nothing in it
-- title.fr: InstallLocation désigne un répertoire vide
-- remedy: Reinstall the suite, or set InstallLocation to the directory where the suite is.
-- remedy.fr: Réinstaller la suite, ou corriger InstallLocation pour qu'il désigne le répertoire de la suite.
-- needs: installation, registry data
-- why: The suite and its updates find themselves through InstallLocation. The report lists the
--   directory it names; nothing in it but "." and ".." (an empty directory), or no entry at all (no
--   such directory, or one that cannot be read), means the files were deleted or moved, or the value
--   points at the wrong place.
SELECT v.report, v.line, v.text || ' is listed with nothing in it'
FROM registry_values v
JOIN directories d ON d.report = v.report AND d.path = v.text
WHERE v.name = 'InstallLocation' AND v.text <> ''
  AND NOT EXISTS (SELECT 1 FROM entries e WHERE e.report = d.report AND e.directory = d.kind
                  AND e.name NOT IN ('.', '..'))
  AND d.kind = (SELECT d2.kind FROM directories d2 WHERE d2.report = v.report AND d2.path = v.text
                ORDER BY d2.kind = 'registry' DESC LIMIT 1);
