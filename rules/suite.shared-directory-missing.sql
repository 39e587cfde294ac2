-- id: suite.shared-directory-missing
-- severity: warning
-- title: A shared data directory of the suite is missing
-- title.fr: Un répertoire de données partagé de la suite manque
-- remedy: Repair the installation, which creates the shared directories; restore their content from a backup if it was removed.
-- remedy.fr: Réparer l'installation, qui crée les répertoires partagés ; restaurer leur contenu d'une sauvegarde s'il a été supprimé.
-- needs: installation
-- why: The suite keeps its settings in the shared parameters directory and its scheduled jobs in the
--   Shared Batch directory (both under ProgramData). While the suite is installed (installation data
--   in the registry or files in the standard directory) a directory listed with no entries at all is not
--   there: settings are lost and scheduled jobs do not run.
SELECT d.report, d.line, coalesce(d.path, d.kind) || ' is listed with no entries'
FROM directories d
WHERE d.kind IN ('shared parameters', 'shared batch')
  AND NOT EXISTS (SELECT 1 FROM entries e WHERE e.report = d.report AND e.directory = d.kind)
  AND (EXISTS (SELECT 1 FROM registry_values v WHERE v.report = d.report)
       OR EXISTS (SELECT 1 FROM entries e WHERE e.report = d.report AND e.directory = 'standard'));
