-- id: system.low-disk-space
-- severity: warning
-- title: Little free space on C:
-- title.fr: Peu d'espace libre sur C:
-- remedy: Free space on C: (at least 2 GB and 5 % of the volume) before installing or updating.
-- remedy.fr: Libérer de la place sur C: (au moins 2 Go et 5 % du volume) avant d'installer ou de mettre à jour.
-- needs: hardware
-- why: Installers, updates, logs and Windows itself need room on the system volume. Below 2 GB
--   (2097152 K) free for the user, or below 5 % of the volume, updates fail half-way and programs
--   fail to write their files; both thresholds are here, in the query.
SELECT report, volume_line,
       volume_user_k || 'K free for the user of ' || volume_total_k || 'K (' ||
       printf('%.1f', 100.0 * volume_user_k / volume_total_k) || ' %)'
FROM reports
WHERE volume_line IS NOT NULL AND volume_total_k > 0
  AND (volume_user_k < 2097152 OR volume_user_k * 20 < volume_total_k);
