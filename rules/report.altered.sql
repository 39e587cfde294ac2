-- id: report.altered
-- severity: error
-- title: The report was changed after it was saved
-- title.fr: Le rapport a été modifié après son enregistrement
-- remedy: Ask the customer for the file as the program saved it (sent as an attachment, not pasted), or for a new report.
-- remedy.fr: Demander au client le fichier tel que le programme l'a enregistré (en pièce jointe, pas collé), ou un nouveau rapport.
-- why: The checksum trailer no longer matches the text: a transfer cut it short, a mail program or
--   editor re-encoded it or changed its line breaks, or someone edited it. Every other finding of
--   such a report may rest on lines that are not the machine's.
SELECT report, NULL, 'trailer says ' || stored_checksum || ', body gives ' || body_checksum
FROM reports
WHERE verdict = 'altered';
