-- id: program.outside-installation
-- severity: info
-- title: The program ran from outside the suite's installation
-- title.fr: Le programme a été lancé hors de l'installation de la suite
-- remedy: Make the report with the program installed with the suite, so that it sees what the suite sees.
-- remedy.fr: Faire le rapport avec le programme installé avec la suite, pour qu'il voie ce que voit la suite.
-- needs: program, installation
-- why: A copy of the program run from a download folder or a share may be another version than the
--   suite's and lists its own folder as the current directory; while the suite is installed
--   (installation data in the registry or files in the standard directory) the program is expected in
--   the standard directory or the one InstallLocation names.
SELECT r.report, r.program_directory_line, r.program_directory || ' is not the suite''s directory'
FROM reports r
WHERE r.program_directory IS NOT NULL
  AND (EXISTS (SELECT 1 FROM registry_values v WHERE v.report = r.report)
       OR EXISTS (SELECT 1 FROM entries e WHERE e.report = r.report AND e.directory = 'standard'))
  AND NOT EXISTS (
    SELECT 1 FROM directories d
    WHERE d.report = r.report AND d.kind = 'standard'
      AND lower(rtrim(d.path, '\/')) = lower(rtrim(r.program_directory, '\/')))
  AND NOT EXISTS (
    SELECT 1 FROM registry_values v
    WHERE v.report = r.report AND v.name = 'InstallLocation'
      AND lower(rtrim(v.text, '\/')) = lower(rtrim(r.program_directory, '\/')));
