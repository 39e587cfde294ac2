-- id: suite.registry-number-as-text
-- severity: info
-- title: A version number in the registry was stored as text
-- title.fr: Un numéro de version a été enregistré comme texte dans le registre
-- remedy: Repair the installation with an installer that writes the version numbers as DWORD values.
-- remedy.fr: Réparer l'installation avec un installeur qui écrit les numéros de version en valeurs DWORD.
-- needs: registry data
-- why: The report prints VersionMajor, VersionMinor, VersionRevision and VersionBuildReleaseRevision
--   as 32-bit numbers. An installer that stored one as a string of one digit shows up as the code of
--   that digit and the terminating zero: 48 to 57 for "0" to "9" (a string of more characters shows
--   as a large number). Tools that read the number get the wrong version.
SELECT report, line, name || ': ' || number || ' is the text "' || char(number) || '" read as a number'
FROM registry_values
WHERE name IN ('VersionMajor', 'VersionMinor', 'VersionRevision', 'VersionBuildReleaseRevision')
  AND number BETWEEN 48 AND 57;
