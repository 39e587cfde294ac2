-- id: suite.unversioned-file
-- severity: warning
-- title: A library or program of the suite has no product version
-- title.fr: Une bibliothèque ou un programme de la suite n'a pas de version de produit
-- remedy: Compare the file with the one of a working installation; repair or reinstall the suite.
-- remedy.fr: Comparer le fichier avec celui d'une installation saine ; réparer ou réinstaller la suite.
-- needs: installation
-- why: The suite's libraries and programs carry a product version (neutral or U.S. English). When
--   one lacks it while its neighbours in the same directory have one, it is not the file the release
--   shipped: a stub, a file from another vendor, or one built with its version only in another
--   language.
SELECT e.report, e.line, e.name || ' has no product version where ' ||
       (SELECT count(*) FROM entries s
        WHERE s.report = e.report AND s.directory = e.directory AND s.version <> '' AND s.attributes & 16 = 0
          AND (lower(s.name) LIKE '%.dll' OR lower(s.name) LIKE '%.exe')) || ' of its neighbours have one'
FROM entries e
WHERE e.directory IN ('standard', 'registry') AND e.version = '' AND e.attributes & 16 = 0 AND e.size <> 0
  AND (lower(e.name) LIKE '%.dll' OR lower(e.name) LIKE '%.exe')
  AND EXISTS (SELECT 1 FROM entries s
              WHERE s.report = e.report AND s.directory = e.directory AND s.version <> '' AND s.attributes & 16 = 0
                AND (lower(s.name) LIKE '%.dll' OR lower(s.name) LIKE '%.exe'));
