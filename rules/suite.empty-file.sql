-- id: suite.empty-file
-- severity: error
-- title: A library or program of the suite is empty
-- title.fr: Une bibliothèque ou un programme de la suite est vide
-- remedy: Repair or reinstall the suite; check the disk and the antivirus's quarantine.
-- remedy.fr: Réparer ou réinstaller la suite ; vérifier le disque et la quarantaine de l'antivirus.
-- needs: installation
-- why: A .dll or .exe of 0 bytes cannot load: a copy that failed (disk full, interrupted update) or a
--   file an antivirus emptied. The program or feature that needs it fails, often with an unclear
--   message.
SELECT report, line, name || ' in the ' || directory || ' directory has size 0'
FROM entries
WHERE directory IN ('standard', 'registry') AND size = 0 AND attributes & 16 = 0
  AND (lower(name) LIKE '%.dll' OR lower(name) LIKE '%.exe');
