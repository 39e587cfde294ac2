-- id: suite.not-installed
-- severity: warning
-- title: The suite is not installed
-- title.fr: La suite n'est pas installée
-- remedy: Install the suite, or make the report on the machine where it is installed.
-- remedy.fr: Installer la suite, ou faire le rapport sur la machine où elle est installée.
-- needs: installation
-- why: The installer leaves its data under HKLM\Software\Orvane Software and its files in the
--   standard installation directory. With neither there (no registry value, no entry in the standard
--   directory) there is no suite on this machine, whatever the customer believes.
SELECT d.report, d.line, 'no installation data in the registry and nothing in ' || coalesce(d.path, 'the standard directory')
FROM directories d
WHERE d.kind = 'standard'
  AND NOT EXISTS (SELECT 1 FROM entries e WHERE e.report = d.report AND e.directory = 'standard')
  AND NOT EXISTS (SELECT 1 FROM registry_values v WHERE v.report = d.report);
