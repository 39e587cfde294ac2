-- id: report.edited
-- severity: warning
-- title: The report holds lines the program does not write
-- title.fr: Le rapport contient des lignes que le programme n'écrit pas
-- remedy: Ask for a new report made by the program; do not trust the lines shown as evidence.
-- remedy.fr: Demander un nouveau rapport fait par le programme ; ne pas se fier aux lignes citées.
-- why: The reader takes a line only where the program puts it and in the form the program prints
--   it. A line it does not recognise was edited, added or moved by hand (the checksum can be made
--   again by anyone), or comes from another program; the facts around it may not be the machine's.
SELECT report, line, 'a line the program does not write here'
FROM unrecognised;
