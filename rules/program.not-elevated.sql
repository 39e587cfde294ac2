-- id: program.not-elevated
-- severity: info
-- title: The report was made without administrator rights
-- title.fr: Le rapport a été fait sans droits d'administrateur
-- remedy: For a complete picture, ask for a report made with "Run as administrator".
-- remedy.fr: Pour une vue complète, demander un rapport fait avec « Exécuter en tant qu'administrateur ».
-- needs: program
-- why: Without administrator rights the program may be refused folders and registry keys that
--   only administrators may read; a directory shown empty or missing installation data may then be
--   a matter of rights, not of the installation.
SELECT report, program_name_line, 'no "launched as administrator" line'
FROM reports
WHERE elevated = 0;
