-- id: network.no-adapter-up
-- severity: warning
-- title: No network adapter is up with an address
-- title.fr: Aucune carte réseau n'est active avec une adresse
-- remedy: Check the network connection and the adapter's driver; the suite's licence check and updates need the network.
-- remedy.fr: Vérifier la connexion réseau et le pilote de la carte ; la licence et les mises à jour de la suite ont besoin du réseau.
-- needs: network
-- why: An adapter serves only when it is up (OperStatus 1) and has a unicast address; the loopback
--   adapter (IfType 24) reaches no other machine. With none such, the machine is off the network, or
--   the listing itself failed (the detail says which).
SELECT r.report, s.line,
       CASE WHEN r.network_failure IS NOT NULL THEN 'the adapters could not be listed: ' || r.network_failure
            ELSE (SELECT count(*) FROM adapters a WHERE a.report = r.report) ||
                 ' adapters listed, none up with an address other than loopback' END
FROM reports r JOIN sections s ON s.report = r.report AND s.section = 'network'
WHERE NOT EXISTS (SELECT 1 FROM adapters a
                  WHERE a.report = r.report AND a.oper_status = 1 AND a.if_type <> 24 AND a.unicast_count > 0);
