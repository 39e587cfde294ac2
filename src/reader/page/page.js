// The report page of reportcheck: draws a report, a comparison or a fleet
// from the JSON in #page-data. Every text that comes from a report goes into
// the page through textContent (or as an attribute value), never as HTML.
(function () {
  'use strict';

  const TEXTS = {
    en: {
      reportTitle: 'Report', comparisonTitle: 'Comparison', fleetTitle: 'Fleet',
      colon: ': ',
      intact: 'Intact', altered: 'Altered',
      intactText: (c) => 'The checksum ' + c + ' matches the text: the report arrived whole.',
      alteredText: (s, b) => 'The trailer says ' + s + ', the text gives ' + b + '. This report was changed after it was saved: read it with care.',
      oldReport: 'Old report', newReport: 'New report',
      findings: 'Findings', noFindings: 'No findings.',
      error: 'Error', warning: 'Warning', info: 'Information',
      remedy: 'What to do: ', line: 'line', evidence: (n) => 'Evidence: line ' + n,
      report: 'The report', openAll: 'Open every section', closeAll: 'Close every section',
      linesCount: (n) => n + ' lines',
      rawLines: (a, b) => 'Lines ' + a + ' to ' + b + ' as written',
      section: { Header: 'Header', Program: 'Program', Host: 'Host', Windows: 'Windows', Hardware: 'Hardware',
        Network: 'Network', 'Orvane Software installation': 'Orvane Software installation' },
      filter: 'Filter', shown: (a, b) => a + ' of ' + b + ' shown',
      sortBy: 'Sort by this column',
      cols: { line: 'Line', attributes: 'Attributes', size: 'Size', created: 'Created', written: 'Written', name: 'Name',
        version: 'Version', acl: 'Access list', content: 'Content', value: 'Value', adapter: 'Adapter',
        friendly: 'Friendly name', description: 'Description', mac: 'Physical address', status: 'Status', mtu: 'MTU',
        type: 'Type', unicast: 'Addresses', machine: 'Machine', user: 'User', when: 'Report of', verdict: 'Verdict',
        errors: 'Errors', warnings: 'Warnings', infos: 'Information', file: 'File', rule: 'Rule', severity: 'Severity',
        title: 'Title', machines: 'Machines', which: 'Which', section: 'Section', changes: 'Changes',
        notChecked: 'Not checked by' },
      adapters: 'Network adapters', registry: 'Registry installation data',
      unrecognised: 'not recognised by the reader',
      changes: 'Changes', noChanges: 'No change from the old report.',
      changeCount: (n) => n === 1 ? '1 change' : n + ' changes',
      changesOnly: 'Show changes only',
      changesOnlyNote: 'Changes only: the unchanged lines, rows and sections are left out, on screen and in print.',
      added: 'added', removed: 'removed', changed: 'changed', none: '(none)',
      against: (f) => 'Compared with the old report ' + f,
      verdictNames: { intact: 'intact', altered: 'altered', 'not a report': 'not a report', unreadable: 'unreadable' },
      reports: 'Reports', fleetFindings: 'Findings across the fleet', files: 'Files of the suite',
      fleetCounts: (n, a, b) => n + (n === 1 ? ' file: ' : ' files: ') + a + ' altered, ' + b +
        (b === 1 ? ' not a report or unreadable.' : ' not reports or unreadable.'),
      noFleetFindings: 'No findings in these reports.', noFiles: 'No file of the suite in these reports.',
      page: (a, b) => 'Page ' + a + ' of ' + b, previous: 'Previous page', next: 'Next page',
      andMore: (n) => ' and ' + n + ' more', showMachines: 'Show the machines',
      navigation: 'Contents', jumpFinding: 'Go to the evidence',
      notChecked: (n) => n === 1 ? '1 rule could not check this report' : n + ' rules could not check this report',
      rulesCount: (n) => n === 1 ? '1 rule' : n + ' rules',
      missing: (what) => 'no ' + what + ' in the report',
      ambiguousDate: 'ambiguous date',
      ambiguousTitle: (a, b) => 'Day and month read both ways: ' + a + ' or ' + b
    },
    fr: {
      reportTitle: 'Rapport', comparisonTitle: 'Comparaison', fleetTitle: 'Parc',
      colon: '\u00A0: ',
      intact: 'Intact', altered: 'Modifié',
      intactText: (c) => 'La somme de contrôle ' + c + ' correspond au texte : le rapport est arrivé entier.',
      alteredText: (s, b) => 'La fin du fichier indique ' + s + ', le texte donne ' + b + '. Ce rapport a été modifié après son enregistrement : lisez-le avec prudence.',
      oldReport: 'Ancien rapport', newReport: 'Nouveau rapport',
      findings: 'Constats', noFindings: 'Aucun constat.',
      error: 'Erreur', warning: 'Avertissement', info: 'Information',
      remedy: 'Que faire : ', line: 'ligne', evidence: (n) => 'Preuve : ligne ' + n,
      report: 'Le rapport', openAll: 'Ouvrir toutes les sections', closeAll: 'Fermer toutes les sections',
      linesCount: (n) => n + ' lignes',
      rawLines: (a, b) => 'Lignes ' + a + ' à ' + b + ' telles qu’écrites',
      section: { Header: 'En-tête', Program: 'Programme', Host: 'Hôte', Windows: 'Windows', Hardware: 'Matériel',
        Network: 'Réseau', 'Orvane Software installation': 'Installation d’Orvane Software' },
      filter: 'Filtrer', shown: (a, b) => a + ' sur ' + b + ' affichés',
      sortBy: 'Trier selon cette colonne',
      cols: { line: 'Ligne', attributes: 'Attributs', size: 'Taille', created: 'Création', written: 'Modification', name: 'Nom',
        version: 'Version', acl: 'Liste d’accès', content: 'Contenu', value: 'Valeur', adapter: 'Carte',
        friendly: 'Nom usuel', description: 'Description', mac: 'Adresse physique', status: 'État', mtu: 'MTU',
        type: 'Type', unicast: 'Adresses', machine: 'Machine', user: 'Utilisateur', when: 'Rapport du', verdict: 'Verdict',
        errors: 'Erreurs', warnings: 'Avertissements', infos: 'Informations', file: 'Fichier', rule: 'Règle', severity: 'Gravité',
        title: 'Titre', machines: 'Machines', which: 'Lesquelles', section: 'Section', changes: 'Changements',
        notChecked: 'Non vérifié par' },
      adapters: 'Cartes réseau', registry: 'Données d’installation du registre',
      unrecognised: 'non reconnue par le lecteur',
      changes: 'Changements', noChanges: 'Aucun changement depuis l’ancien rapport.',
      changeCount: (n) => n === 1 ? '1 changement' : n + ' changements',
      changesOnly: 'Ne montrer que les changements',
      changesOnlyNote: 'Changements seuls : les lignes, rangées et sections inchangées sont omises, à l’écran comme à l’impression.',
      added: 'ajouté', removed: 'supprimé', changed: 'modifié', none: '(aucun)',
      against: (f) => 'Comparé à l’ancien rapport ' + f,
      verdictNames: { intact: 'intact', altered: 'modifié', 'not a report': 'pas un rapport', unreadable: 'illisible' },
      reports: 'Rapports', fleetFindings: 'Constats sur le parc', files: 'Fichiers de la suite',
      // French counts 0 and 1 in the singular.
      fleetCounts: (n, a, b) => n + (n > 1 ? ' fichiers : ' : ' fichier : ') + a + (a > 1 ? ' modifiés, ' : ' modifié, ') + b +
        (b > 1 ? ' qui ne sont pas des rapports ou sont illisibles.' : ' qui n\u2019est pas un rapport ou est illisible.'),
      noFleetFindings: 'Aucun constat dans ces rapports.', noFiles: 'Aucun fichier de la suite dans ces rapports.',
      page: (a, b) => 'Page ' + a + ' sur ' + b, previous: 'Page précédente', next: 'Page suivante',
      andMore: (n) => ' et ' + n + ' autres', showMachines: 'Montrer les machines',
      navigation: 'Sommaire', jumpFinding: 'Aller à la preuve',
      notChecked: (n) => n === 1 ? '1 règle n’a pas pu vérifier ce rapport' : n + ' règles n’ont pas pu vérifier ce rapport',
      rulesCount: (n) => n === 1 ? '1 règle' : n + ' règles',
      missing: (what) => 'pas de « ' + what + ' » dans le rapport',
      ambiguousDate: 'date ambiguë',
      ambiguousTitle: (a, b) => 'Le jour et le mois se lisent dans les deux sens\u00A0: ' + a + ' ou ' + b
    }
  };

  const data = JSON.parse(document.getElementById('page-data').textContent);
  const lang = data.lang === 'fr' ? 'fr' : 'en';
  const T = TEXTS[lang];
  const SEVERITY_ORDER = { error: 0, warning: 1, info: 2 };
  const SEVERITY_ICON = { error: '\u2716', warning: '\u26A0', info: '\u2139' };
  const PAGE_ROWS = 100;
  const COLLATOR = new Intl.Collator(lang, { numeric: true });
  const ENTRY_ROWS = 200;
  const ENTRY_MEMBERS = ['line', 'contentLine', 'attributes', 'size', 'created', 'written', 'name', 'version', 'acl', 'content'];
  // Entries come as arrays (the page of a large report stays small).
  if (data.report) {
    for (const dir of data.report.directories)
      dir.entries = dir.entries.map((values) => Object.fromEntries(ENTRY_MEMBERS.map((key, i) => [key, values[i]])));
  }
  // "22/11/2026  14:32:01" sorts as "2026/11/22 14:32:01"; another form as it is.
  function timeKey(printed) {
    const m = /^(\d\d)\/(\d\d)\/(\d{4}) +(.*)$/.exec(printed);
    return m ? m[3] + '/' + m[2] + '/' + m[1] + ' ' + m[4] : printed;
  }

  // --- building the page without HTML ------------------------------------

  function el(tag, props, children) {
    const node = document.createElement(tag);
    if (props) {
      for (const key of Object.keys(props)) {
        const value = props[key];
        if (value === undefined || value === null || value === false) continue;
        if (key === 'class') node.className = value;
        else if (key === 'text') node.textContent = value;
        else if (key.startsWith('on')) node.addEventListener(key.slice(2), value);
        else node.setAttribute(key, value === true ? '' : value);
      }
    }
    if (children) for (const child of children) if (child !== null && child !== undefined) node.append(child);
    return node;
  }

  // Characters that would act rather than show (controls, terminal escapes,
  // direction overrides) are kept in the text, each in an isolated span that
  // shows its name instead: the text stays exactly the report's.
  const ACTING = /[\u0000-\u0008\u000A-\u001F\u007F-\u009F\u061C\u200E\u200F\u202A-\u202E\u2066-\u2069]/;
  const ACTING_ALL = new RegExp(ACTING.source, 'g');
  function nameOf(ch) {
    const code = ch.charCodeAt(0);
    if (code < 0x20) return String.fromCharCode(0x2400 + code);
    if (code === 0x7F) return '\u2421';
    return 'U+' + code.toString(16).toUpperCase().padStart(4, '0');
  }
  function textOf(text) {
    if (!ACTING.test(text)) return document.createTextNode(text);
    const fragment = document.createDocumentFragment();
    let last = 0;
    text.replace(ACTING_ALL, (ch, at) => {
      if (at > last) fragment.append(text.slice(last, at));
      fragment.append(el('span', { class: 'ctl', 'data-show': nameOf(ch), title: nameOf(ch), text: ch }));
      last = at + 1;
      return ch;
    });
    if (last < text.length) fragment.append(text.slice(last));
    return fragment;
  }
  function textCell(text, cls) {
    const cell = el('td', { class: cls });
    cell.append(textOf(text === null || text === undefined ? '' : String(text)));
    return cell;
  }

  function severityBadge(severity) {
    return el('span', { class: 'sev ' + severity }, [
      el('span', { 'aria-hidden': 'true', text: SEVERITY_ICON[severity] + ' ' }), T[severity]]);
  }

  // --- jumping to a line ---------------------------------------------------

  let lastTarget = [];
  function openAncestors(node) {
    for (let d = node.closest('details'); d; d = d.parentElement && d.parentElement.closest('details')) d.open = true;
  }
  function goToLine(number) {
    for (const node of lastTarget) node.classList.remove('target');
    lastTarget = [];
    for (const raw of document.querySelectorAll('details.raw')) {
      if (number >= Number(raw.dataset.first) && number <= Number(raw.dataset.last)) raw.fill();
    }
    showChangesOnly(false);
    for (const block of document.querySelectorAll('.table-block')) if (block.reveal) block.reveal(number);
    const line = document.getElementById('L' + number);
    const row = document.querySelector('tr[data-line="' + number + '"]');
    const shown = row || line;
    if (!shown) return;
    for (const node of [line, row]) if (node) { openAncestors(node); node.classList.add('target'); lastTarget.push(node); }
    shown.setAttribute('tabindex', '-1');
    shown.scrollIntoView({ block: 'center' });
    shown.focus({ preventScroll: true });
  }
  // Lines hide by the page's class; a table filters its rows before it makes
  // its pages, so that a page is never left empty of changed rows.
  function showChangesOnly(on) {
    document.body.classList.toggle('changes-only', on);
    const box = document.getElementById('changes-only');
    if (box) box.checked = on;
    for (const block of document.querySelectorAll('.table-block')) if (block.refilter) block.refilter();
  }
  function lineLink(number, label) {
    return el('a', { href: '#L' + number, class: 'line-link', onclick: (e) => { e.preventDefault(); goToLine(number); } },
      [label || T.line + ' ' + number]);
  }

  // --- sortable, filterable tables -----------------------------------------

  // columns: [{ key, label, number?, cell(row) -> td }]; rows: objects.
  // Draws at most `pageRows` rows at once when given (the fleet's tables).
  function dataTable(caption, columns, rows, options) {
    options = options || {};
    const block = el('div', { class: 'table-block' });
    const filterId = 'f' + Math.random().toString(36).slice(2, 10);
    const count = el('span', { class: 'count', 'aria-live': 'polite' });
    const input = el('input', { type: 'search', id: filterId });
    const controls = el('div', { class: 'controls' }, [el('label', { for: filterId, text: T.filter + ' ' }), input, count]);
    const table = el('table', options.tableClass ? { class: options.tableClass } : null);
    table.append(el('caption', null, [textOf(caption)]));
    const headRow = el('tr');
    let sortKey = null, sortUp = true;
    const heads = columns.map((c) => {
      const th = el('th', { scope: 'col' });
      th.append(el('button', { type: 'button', title: T.sortBy, onclick: () => sortBy(c, th) }, [c.label]));
      headRow.append(th);
      return th;
    });
    table.append(el('thead', null, [headRow]));
    const tbody = el('tbody');
    table.append(tbody);
    const items = rows.map((row, index) => ({ row, index, tr: null, search: null }));
    let order = items.slice();
    let visible = order;
    let page = 0;
    const pager = options.pageRows ? el('div', { class: 'pager' }) : null;

    function rowOf(item) {
      if (!item.tr) {
        item.tr = el('tr', item.row.line ? { 'data-line': item.row.line } : null, columns.map((c) => c.cell(item.row)));
        if (options.decorate) options.decorate(item.row, item.tr);
      }
      return item.tr;
    }
    function searchOf(item) {
      if (item.search === null) item.search = columns.map((c) => String(c.text ? c.text(item.row) : item.row[c.key] ?? '')).join('\u0001').toLowerCase();
      return item.search;
    }
    function draw() {
      const wanted = options.pageRows ? visible.slice(page * options.pageRows, (page + 1) * options.pageRows) : visible;
      if (options.pageRows) {
        tbody.replaceChildren(...wanted.map(rowOf));
        const pages = Math.max(1, Math.ceil(visible.length / options.pageRows));
        pager.hidden = pages === 1 && !options.alwaysPager;
        pager.replaceChildren(
          el('button', { type: 'button', disabled: page === 0, onclick: () => { page--; draw(); } }, [T.previous]),
          el('span', { text: T.page(page + 1, pages) }),
          el('button', { type: 'button', disabled: page >= pages - 1, onclick: () => { page++; draw(); } }, [T.next]));
      } else {
        const shown = new Set(visible);
        const fragment = document.createDocumentFragment();
        for (const item of order) { const tr = rowOf(item); tr.hidden = !shown.has(item); fragment.append(tr); }
        tbody.append(fragment);
      }
      count.textContent = T.shown(visible.length, items.length);
    }
    // The rows the filter words and "changes only" leave, in the table's order.
    function filtered() {
      const words = input.value.toLowerCase().trim();
      const changesOnly = options.changed && document.body.classList.contains('changes-only');
      if (!words && !changesOnly) return order;
      return order.filter((item) => (!changesOnly || options.changed(item.row)) && (!words || searchOf(item).includes(words)));
    }
    function applyFilter() {
      visible = filtered();
      page = 0;
      draw();
    }
    function sortBy(column, th) {
      sortUp = sortKey === column.key ? !sortUp : true;
      sortKey = column.key;
      const value = column.sort || ((r) => r[column.key]);
      const direction = sortUp ? 1 : -1;
      // Each row's key once, then one collator: a table of 10,000 rows sorts
      // in well under the 200 ms a click may take.
      const keyed = items.map((item) => {
        const key = value(item.row);
        return { item, key: column.number ? key ?? -Infinity : String(key ?? '') };
      });
      const compare = column.number ? (x, y) => x - y : COLLATOR.compare;
      keyed.sort((a, b) => compare(a.key, b.key) * direction || a.item.index - b.item.index);
      order = keyed.map((k) => k.item);
      for (const h of heads) h.removeAttribute('aria-sort');
      th.setAttribute('aria-sort', sortUp ? 'ascending' : 'descending');
      applyFilter();
    }
    input.addEventListener('input', applyFilter);
    // Shows the row of a report line, wherever the filter and the pages hid it.
    block.reveal = (line) => {
      if (!order.some((item) => item.row.line === line)) return;
      input.value = '';
      visible = filtered();
      const at = visible.findIndex((item) => item.row.line === line);
      if (options.pageRows) page = Math.floor(Math.max(at, 0) / options.pageRows);
      draw();
    };
    block.refilter = applyFilter;
    block.append(controls, el('div', { class: 'table-wrap', tabindex: '0', role: 'region', 'aria-label': caption }, [table]));
    if (pager) block.append(pager);
    draw();
    return block;
  }

  // --- the report -----------------------------------------------------------

  function verdictBox(report, label) {
    const intact = report.verdict === 'intact';
    const box = el('div', { class: 'verdict ' + report.verdict, role: intact ? null : 'alert' }, [
      el('span', { class: 'icon', 'aria-hidden': 'true', text: intact ? '\u2714' : '\u2716' }),
      el('div', null, [
        el('p', null, [el('strong', { text: (label ? label + T.colon : '') + (intact ? T.intact : T.altered) })]),
        el('p', { text: intact ? T.intactText(report.bodyChecksum) : T.alteredText(report.storedChecksum, report.bodyChecksum) })
      ])
    ]);
    return box;
  }

  function findingsList(findings) {
    const sorted = findings.map((f, i) => ({ f, i }))
      .sort((a, b) => (SEVERITY_ORDER[a.f.severity] - SEVERITY_ORDER[b.f.severity]) || a.i - b.i).map((x) => x.f);
    if (!sorted.length) return el('p', { text: T.noFindings });
    return el('ul', { class: 'findings' }, sorted.map((f) => el('li', { class: f.severity }, [
      el('p', null, [severityBadge(f.severity), ' ', el('span', { class: 'title' }, [textOf(f.title[lang] || f.title.en || '')]),
        ' ', el('span', { class: 'rule' }, [textOf(f.rule)])]),
      f.detail ? el('p', null, [textOf(f.detail)]) : null,
      el('p', null, [T.remedy, textOf(f.remedy[lang] || f.remedy.en || '')]),
      f.line ? el('p', null, [lineLink(f.line, T.evidence(f.line))]) : null
    ])));
  }

  // The rules that lacked a section of the report: not passed, not checked.
  function notCheckedList(notChecked, summary) {
    if (!notChecked || !notChecked.length) return null;
    return el('details', { class: 'not-checked' }, [
      el('summary', { text: summary(notChecked.length) }),
      el('ul', null, notChecked.map((n) => el('li', null, [
        textOf(n.title[lang] || n.title.en), ' ', el('span', { class: 'rule' }, [textOf(n.rule)]),
        ' \u2014 ', textOf(T.missing(n.missing))])))]);
  }

  function lineNode(report, number, marks) {
    const text = report.lines[number - 1];
    const div = el('div', { class: 'line', id: 'L' + number, 'data-line': number });
    div.append(el('a', { class: 'num', href: '#L' + number, 'aria-hidden': 'true', tabindex: '-1', text: String(number) }));
    const span = el('span', { class: 'text' });
    span.append(textOf(text));
    div.append(span);
    if (marks.unrecognised.has(number)) { div.classList.add('unrecognised'); div.title = T.unrecognised; }
    if (marks.flagged.has(number)) div.classList.add('flagged');
    return div;
  }

  function entryTable(dir, marks) {
    const outliers = marks.outliers;
    const cols = [
      { key: 'line', label: T.cols.line, number: true, cell: (r) => el('td', { class: 'number' }, [lineLink(r.line, String(r.line))]) },
      { key: 'attributes', label: T.cols.attributes, cell: (r) => textCell(r.attributes) },
      { key: 'size', label: T.cols.size, number: true, cell: (r) => textCell(String(r.size), 'number') },
      { key: 'created', label: T.cols.created, sort: (r) => timeKey(r.created), cell: (r) => textCell(r.created) },
      { key: 'written', label: T.cols.written, sort: (r) => timeKey(r.written), cell: (r) => textCell(r.written) },
      { key: 'name', label: T.cols.name, cell: (r) => textCell(r.name) },
      { key: 'version', label: T.cols.version, cell: (r) => textCell(r.version, outliers.has(r.line) ? 'outlier' : null) }
    ];
    if (dir.entries.some((e) => e.acl !== null)) cols.push({ key: 'acl', label: T.cols.acl, cell: (r) => textCell(r.acl) });
    if (dir.entries.some((e) => e.content !== null)) cols.push({ key: 'content', label: T.cols.content, cell: (r) => textCell(r.content) });
    return dataTable(dir.title + (dir.path ? ' (' + dir.path + ')' : ''), cols, dir.entries, {
      pageRows: ENTRY_ROWS, ...rowMarks(marks)
    });
  }

  // A table row as its line: flagged by a finding, changed, or not; and, on
  // a comparison, whether "changes only" keeps it.
  function rowMarks(marks) {
    return {
      decorate: (r, tr) => {
        if (marks.flagged.has(r.line)) tr.classList.add('flagged');
        const change = marks.changeByLine.get(r.line);
        if (change) tr.classList.add('chg-' + change);
        else if (marks.comparing) tr.classList.add('unchanged');
      },
      changed: marks.comparing ? (r) => marks.changeByLine.has(r.line) : null
    };
  }

  function registryTable(values, marks) {
    return dataTable(T.registry, [
      { key: 'line', label: T.cols.line, number: true, cell: (r) => el('td', { class: 'number' }, [lineLink(r.line, String(r.line))]) },
      { key: 'name', label: T.cols.name, cell: (r) => textCell(r.name) },
      { key: 'value', label: T.cols.value, cell: (r) => textCell(r.value) }
    ], values, rowMarks(marks));
  }

  function adapterTable(adapters, marks) {
    const num = (key) => ({ key, label: T.cols[key === 'operStatus' ? 'status' : key === 'ifType' ? 'type' : key === 'unicastCount' ? 'unicast' : 'mtu'],
      number: true, cell: (r) => textCell(r[key] === null ? '' : String(r[key]), 'number') });
    return dataTable(T.adapters, [
      { key: 'line', label: T.cols.line, number: true, cell: (r) => el('td', { class: 'number' }, [lineLink(r.line, String(r.line))]) },
      { key: 'friendlyName', label: T.cols.friendly, cell: (r) => textCell(r.friendlyName) },
      { key: 'description', label: T.cols.description, cell: (r) => textCell(r.description) },
      { key: 'physicalAddress', label: T.cols.mac, cell: (r) => textCell(r.physicalAddress) },
      num('operStatus'), num('ifType'), num('mtu'), num('unicastCount'),
      { key: 'name', label: T.cols.adapter, cell: (r) => textCell(r.name) }
    ], adapters, rowMarks(marks));
  }

  // The lines of one section, with the tables in their places: a directory's
  // table after its heading line and its entry lines (as written) folded
  // under it; the adapters' and the registry data's tables before their lines.
  function sectionBody(report, section, marks) {
    const body = el('div', { class: 'section-body' });
    const lines = el('div', { class: 'lines', role: 'region', tabindex: '0', 'aria-label': T.section[section.name] || section.name });
    body.append(lines);
    const dirByLine = new Map(report.directories.filter((d) => d.line).map((d) => [d.line, d]));
    const registryFirst = report.registry.length ? report.registry[0].line : 0;
    if (section.name === 'Network' && report.adapters.length) lines.before(adapterTable(report.adapters, marks));
    let target = lines;
    for (let n = section.first; n <= section.last; n++) {
      if (n === registryFirst) { target.append(registryTable(report.registry, marks)); }
      const dir = dirByLine.get(n);
      target.append(lineNode(report, n, marks));
      noteChanges(target, n, marks);
      if (dir && dir.entries.length) {
        target.append(entryTable(dir, marks));
        const first = n + 1;
        let last = n;
        for (const e of dir.entries) last = Math.max(last, e.contentLine || e.line || last);
        // The lines as written are drawn when first opened: a directory of
        // 10,000 entries would otherwise draw each twice before the page answers.
        const raw = el('details', { class: 'raw', 'data-first': first, 'data-last': last },
          [el('summary', { text: T.rawLines(first, last) })]);
        raw.fill = () => {
          if (raw.querySelector('.lines')) return;
          const rawLines = el('div', { class: 'lines' });
          for (let k = first; k <= last; k++) { rawLines.append(lineNode(report, k, marks)); noteChanges(rawLines, k, marks); }
          raw.append(rawLines);
        };
        raw.addEventListener('toggle', () => { if (raw.open) raw.fill(); });
        n = last;
        target.append(raw);
        if (marks.comparing && !dir.entries.some((e) => marks.changeByLine.has(e.line))) raw.classList.add('unchanged');
      }
    }
    return body;
  }

  function changeText(c) {
    const subject = c.subject ? c.subject + ': ' : '';
    if (c.change === 'changed') return subject + c.field + ': ' + (c.old ?? T.none) + ' \u2192 ' + (c.new ?? T.none);
    const value = c.change === 'added' ? c.new : c.old;
    return subject + (value ? value : '');
  }

  function noteChanges(target, n, marks) {
    const notes = marks.notesByLine.get(n);
    if (!notes) {
      if (marks.comparing) target.lastChild.classList.add('unchanged');
      return;
    }
    target.lastChild.classList.add('chg-' + notes[0].change);
    for (const c of notes) {
      target.append(el('div', { class: 'note ' + c.change }, [
        el('span', { class: 'kind', text: T[c.change] + ' ' }), textOf(changeText(c))]));
    }
  }

  function marksOf(report, changes) {
    const marks = {
      unrecognised: new Set(report.unrecognised), flagged: new Set(), outliers: new Set(),
      notesByLine: new Map(), changeByLine: new Map(), comparing: !!changes
    };
    for (const f of report.findings) {
      if (!f.line) continue;
      marks.flagged.add(f.line);
      if (/mixed-versions/.test(f.rule)) marks.outliers.add(f.line);
    }
    for (const c of changes || []) {
      if (!c.line) continue;
      if (!marks.notesByLine.has(c.line)) marks.notesByLine.set(c.line, []);
      marks.notesByLine.get(c.line).push(c);
      if (c.change !== 'removed' || !marks.changeByLine.has(c.line)) {
        const entry = c.change === 'removed' ? null : c.change;
        if (entry) marks.changeByLine.set(c.line, entry);
      }
    }
    return marks;
  }

  function reportSections(report, changes) {
    const marks = marksOf(report, changes);
    const countBySection = new Map();
    for (const c of changes || []) countBySection.set(c.section, (countBySection.get(c.section) || 0) + 1);
    const wrap = el('div', { id: 'report-sections' });
    for (const section of report.sections) {
      const name = T.section[section.name] || section.name;
      const summary = el('summary', null, [el('h3', { text: name }),
        el('span', { class: 'count', text: ' \u2014 ' + T.linesCount(section.last - section.first + 1) })]);
      const count = countBySection.get(section.name);
      if (changes && count) summary.append(el('span', { class: 'badge', text: T.changeCount(count) }));
      const details = el('details', { class: 'section' + (changes && !count ? ' unchanged' : ''), open: true,
        id: 'section-' + report.sections.indexOf(section) }, [summary]);
      details.append(sectionBody(report, section, marks));
      wrap.append(details);
    }
    return wrap;
  }

  // Open: every section and every directory's lines as written (printing too).
  function toggleAll(open) {
    if (open) for (const raw of document.querySelectorAll('details.raw')) { raw.fill(); raw.open = true; }
    for (const d of document.querySelectorAll('#report-sections details.section')) d.open = open;
  }

  function reportPart(report, changes) {
    return [
      el('h2', { id: 'report', text: T.report }),
      el('div', { class: 'controls' }, [
        el('button', { type: 'button', class: 'toggle', onclick: () => toggleAll(true) }, [T.openAll]),
        el('button', { type: 'button', class: 'toggle', onclick: () => toggleAll(false) }, [T.closeAll])]),
      reportSections(report, changes)
    ];
  }

  function drawReport(main) {
    const report = data.report;
    document.title = T.reportTitle + ' \u2014 ' + report.file;
    main.append(el('h1', null, [T.reportTitle + T.colon, textOf(report.file)]), verdictBox(report));
    main.append(el('h2', { id: 'findings', text: T.findings }), findingsList(report.findings));
    const unchecked = notCheckedList(report.notChecked, T.notChecked);
    if (unchecked) main.append(unchecked);
    main.append(...reportPart(report, null));
  }

  function drawComparison(main) {
    const report = data.report;
    const cmp = data.comparison;
    document.title = T.comparisonTitle + ' \u2014 ' + report.file;
    main.append(el('h1', null, [T.comparisonTitle + T.colon, textOf(report.file)]),
      el('p', { class: 'sub' }, [textOf(T.against(cmp.oldFile))]),
      verdictBox(report, T.newReport), verdictBox(cmp.old, T.oldReport));
    main.append(el('h2', { id: 'findings', text: T.findings }), findingsList(report.findings));
    const unchecked = notCheckedList(report.notChecked, T.notChecked);
    if (unchecked) main.append(unchecked);
    main.append(el('h2', { id: 'changes', text: T.changes }));
    if (!cmp.changes.length) {
      main.append(el('p', { text: T.noChanges }));
    } else {
      const counts = new Map();
      for (const c of cmp.changes) counts.set(c.section, (counts.get(c.section) || 0) + 1);
      main.append(el('p', { text: T.changeCount(cmp.changes.length) }));
      const tbody = el('tbody', null, [...counts].map(([s, n]) => el('tr', null, [
        el('th', { scope: 'row', text: T.section[s] || s }), el('td', { class: 'number', text: String(n) })])));
      main.append(el('table', { class: 'summary-table' }, [
        el('thead', null, [el('tr', null, [el('th', { scope: 'col', text: T.cols.section }), el('th', { scope: 'col', text: T.cols.changes })])]),
        tbody]));
      main.append(el('ul', { class: 'changes' }, cmp.changes.map((c) => el('li', null, [
        el('span', { class: 'kind', text: T[c.change] + T.colon }), textOf(changeText(c)), ' ',
        c.line ? lineLink(c.line) : null]))));
      const box = el('input', { type: 'checkbox', id: 'changes-only',
        onchange: (e) => showChangesOnly(e.target.checked) });
      main.append(el('div', { class: 'controls' }, [box, el('label', { for: 'changes-only', text: T.changesOnly })]));
      // What is shown is what prints: the paper says so, as the box is not printed.
      main.append(el('p', { class: 'changes-only-note', text: T.changesOnlyNote }));
    }
    main.append(...reportPart(report, cmp.changes));
  }

  // --- the fleet ------------------------------------------------------------

  function machineList(indices, reports) {
    const names = (i) => reports[i].machine || reports[i].path;
    const cell = el('td');
    if (indices.length <= 5) { cell.append(textOf(indices.map(names).join(', '))); return cell; }
    const details = el('details', null, [el('summary', { text: T.showMachines })]);
    details.addEventListener('toggle', () => {
      if (details.dataset.drawn) return;
      details.dataset.drawn = '1';
      details.append(el('div', null, [textOf(indices.map(names).join(', '))]));
    }, { once: false });
    cell.append(details);
    return cell;
  }

  // The header's time in ISO, which orders reports truly whatever their
  // locales, over the header's text as printed; an ambiguous date says so,
  // with both its readings in the title, and sorts with the times unknown.
  const isAmbiguous = (r) => !r.time && r.readings.length === 2;
  function whenCell(r) {
    const cell = el('td', { class: 'when', title: isAmbiguous(r) ? T.ambiguousTitle(r.readings[0], r.readings[1]) : r.when || null });
    if (r.time) cell.append(el('time', { datetime: r.time, text: r.time }));
    else if (isAmbiguous(r)) {
      cell.append(el('span', { class: 'ambiguous' }, [el('span', { 'aria-hidden': 'true', text: '\u26A0 ' }), T.ambiguousDate]));
    }
    cell.append(el('span', { class: r.time || isAmbiguous(r) ? 'printed' : null }, [textOf(r.when)]));
    return cell;
  }
  function whenText(r) {
    return [r.time, isAmbiguous(r) ? T.ambiguousDate + ' ' + r.readings.join(' ') : null, r.when].filter(Boolean).join(' ');
  }

  function drawFleet(main) {
    const fleet = data.fleet;
    const reports = fleet.reports;
    document.title = T.fleetTitle + ' \u2014 ' + fleet.source;
    const altered = reports.filter((r) => r.verdict === 'altered').length;
    const bad = reports.filter((r) => r.verdict === 'not a report' || r.verdict === 'unreadable').length;
    main.append(el('h1', null, [T.fleetTitle + T.colon, textOf(fleet.source)]),
      el('p', { class: 'sub', text: T.fleetCounts(reports.length, altered, bad) }));
    main.append(el('h2', { id: 'reports', text: T.reports }));
    const verdictCell = (r) => {
      const cell = textCell(T.verdictNames[r.verdict] || r.verdict);
      if (r.verdict !== 'intact') { cell.prepend(el('span', { 'aria-hidden': 'true', text: '\u2716 ' })); cell.className = 'bad'; }
      if (r.reason) cell.title = r.reason;
      return cell;
    };
    const countCol = (key) => ({ key, label: T.cols[key], number: true, cell: (r) => textCell(String(r[key]), 'number') });
    const notChecked = (r) => r.notChecked.map((i) => fleet.notChecked[i]);
    main.append(dataTable(T.reports, [
      { key: 'machine', label: T.cols.machine, cell: (r) => textCell(r.machine) },
      { key: 'user', label: T.cols.user, cell: (r) => textCell(r.user) },
      { key: 'when', label: T.cols.when, sort: (r) => r.time || '', text: whenText, cell: whenCell },
      { key: 'verdict', label: T.cols.verdict, text: (r) => T.verdictNames[r.verdict] || r.verdict, cell: verdictCell },
      countCol('errors'), countCol('warnings'), countCol('infos'),
      { key: 'notChecked', label: T.cols.notChecked, number: true, sort: (r) => r.notChecked.length,
        text: (r) => notChecked(r).map((n) => n.rule).join(' '),
        cell: (r) => el('td', null, [notCheckedList(notChecked(r), T.rulesCount)]) },
      { key: 'path', label: T.cols.file, cell: (r) => textCell(r.path) }
    ], reports, { pageRows: PAGE_ROWS }));

    main.append(el('h2', { id: 'fleet-findings', text: T.fleetFindings }));
    if (!fleet.findings.length) main.append(el('p', { text: T.noFleetFindings }));
    else {
      const rows = fleet.findings.slice().sort((a, b) => SEVERITY_ORDER[a.severity] - SEVERITY_ORDER[b.severity] || b.reports.length - a.reports.length);
      main.append(dataTable(T.fleetFindings, [
        { key: 'severity', label: T.cols.severity, sort: (r) => SEVERITY_ORDER[r.severity], text: (r) => T[r.severity], cell: (r) => el('td', null, [severityBadge(r.severity)]) },
        { key: 'rule', label: T.cols.rule, cell: (r) => textCell(r.rule) },
        { key: 'title', label: T.cols.title, text: (r) => r.title[lang], sort: (r) => r.title[lang], cell: (r) => textCell(r.title[lang] || r.title.en) },
        { key: 'count', label: T.cols.machines, number: true, sort: (r) => r.reports.length, text: (r) => r.reports.length, cell: (r) => textCell(String(r.reports.length), 'number') },
        { key: 'which', label: T.cols.which, text: () => '', cell: (r) => machineList(r.reports, reports) }
      ], rows, { pageRows: PAGE_ROWS }));
    }

    main.append(el('h2', { id: 'files', text: T.files }));
    const versions = [];
    for (const f of fleet.files) {
      const usual = f.versions[0].reports.length;
      for (const v of f.versions) versions.push({ name: f.name, version: v.version, reports: v.reports, outlier: v.reports.length < usual });
    }
    if (!versions.length) main.append(el('p', { text: T.noFiles }));
    else main.append(dataTable(T.files, [
      { key: 'name', label: T.cols.file, cell: (r) => textCell(r.name) },
      { key: 'version', label: T.cols.version, cell: (r) => textCell(r.version, r.outlier ? 'outlier' : null) },
      { key: 'count', label: T.cols.machines, number: true, sort: (r) => r.reports.length, text: (r) => r.reports.length, cell: (r) => textCell(String(r.reports.length), 'number') },
      { key: 'which', label: T.cols.which, text: () => '', cell: (r) => machineList(r.reports, reports) }
    ], versions, { pageRows: PAGE_ROWS }));
  }

  // --- start ----------------------------------------------------------------

  // Printed, every section is open and no control shows; with "changes
  // only", what it hides on screen stays hidden on paper.
  let closed = [];
  window.addEventListener('beforeprint', () => {
    closed = [...document.querySelectorAll('details:not([open])')];
    for (const d of closed) { if (d.fill) d.fill(); d.open = true; }
  });
  window.addEventListener('afterprint', () => { for (const d of closed) d.open = false; closed = []; });

  const main = el('main', { id: 'main' });
  if (data.kind === 'fleet') drawFleet(main);
  else if (data.kind === 'comparison') drawComparison(main);
  else drawReport(main);
  document.getElementById('app').replaceWith(main);
  document.documentElement.lang = lang;
  if (location.hash && /^#L\d+$/.test(location.hash)) goToLine(Number(location.hash.slice(2)));
  document.body.dataset.ready = 'true';
})();
