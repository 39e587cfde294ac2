-- id: suite.install-location-twice
-- severity: info
-- title: InstallLocation is the standard directory written differently
-- title.fr: InstallLocation est le répertoire standard écrit autrement
-- remedy: Nothing is broken; the same directory is listed twice. Repairing the installation writes the value in its usual form.
-- remedy.fr: Rien n'est cassé ; le même répertoire est listé deux fois. Réparer l'installation réécrit la valeur sous sa forme habituelle.
-- needs: installation, registry data
-- why: Windows paths ignore letter case and a trailing separator, the report does not: when
--   InstallLocation differs from the standard directory only so, the report lists the same directory a
--   second time under "Registry installation directory". Worth knowing before reading the two listings
--   as two installations.
SELECT v.report, v.line, v.text || ' is ' || d.path || ' written differently'
FROM registry_values v
JOIN directories d ON d.report = v.report AND d.kind = 'standard'
WHERE v.name = 'InstallLocation' AND v.text <> d.path
  AND lower(rtrim(v.text, '\/')) = lower(rtrim(d.path, '\/'));
