/*
 * Every text that a person reads, in every language. An entry is a text or [one, other] chosen by {n}.
 * A further language is one more table; keys that it lacks fall back to English.
 */
import { recall } from './memory.js';

const TABLES = {
  en: {
    language: 'English',
    title: 'Result files',
    lists: 'Lists', listAll: 'All', listRslt: 'Results', listProf: 'Profiles', listScreen: 'Screenshots',
    actions: 'Actions', filter: 'Filter', advanced: 'Advanced', view: 'View', pdf: 'PDF', download: 'Download',
    refresh: 'Read the list again', switchLanguage: 'Language', switchLook: 'Light or dark',
    find: 'Narrow the list', findHint: 'Name, test, port, date …', clearFind: 'Clear the search',
    colName: 'Name', colModule: 'Module', colMode: 'Mode', colTest: 'Test', colPort: 'Port',
    colDatetime: 'Date', colRsltype: 'Kind', colPath: 'Path', colChosen: 'Chosen',
    sortHint: 'Press to sort; Alt and arrow keys change the width',
    sortLabel: 'Sort by', ascending: 'ascending', descending: 'descending', sorted: 'Sorted by {column}, {order}.',
    grid: 'Stored files. Arrow keys move, space chooses, Enter views, Ctrl and A chooses all.',
    chooseAll: 'Choose all shown', clearChoice: 'Clear the choice',
    shown: ['{n} entry', '{n} entries'], shownOf: '{n} of {all} entries', chosen: '{n} chosen',
    chosenHidden: '{n} chosen, {hidden} of them not shown',
    lost: ['{n} entry could not be read from the page.', '{n} entries could not be read from the page.'],
    chips: 'Active filter', removeChip: 'Remove {name}', clearFilter: 'Clear the filter',
    filterRests: 'The filter rests: this list shows everything.', useFilter: 'Show the filtered results',
    module: 'Module', mode: 'Mode', test: 'Test', port: 'Port', jobid: 'Job ID', account: 'Account', locator: 'Locator',
    type: 'Type', fname: 'File name holds', prefix: 'Name begins', suffix: 'Name ends',
    modules: 'Modules', modes: 'Modes', tests: 'Tests', ports: 'Ports',
    emptyStored: 'Nothing is stored here yet', emptyStoredHint: 'Results appear as soon as a test has been saved on the instrument.',
    emptyFilter: 'Nothing matches the filter', emptyFilterHint: 'The instrument holds no entry with all of these properties.',
    emptyFind: 'Nothing matches “{text}”', emptyFindHint: ['The search looks at the one entry of this list.', 'The search looks at the {n} entries of this list.'],
    showAll: 'Show all results',
    loading: 'Reading the list …', loadingSize: 'Reading the list … {size}', loaded: 'List read.',
    filterTitle: 'Filter', filterHint: 'A group without a tick, or with all ticks, does not restrict.',
    filterFor: { rslt: 'Applies to results.', prof: 'Applies to profiles.', all: 'Shows the results that match.' },
    advancedTitle: 'Advanced filter', advancedHint: 'Upper and lower case matter. Empty fields do not restrict.',
    ok: 'OK', cancel: 'Cancel', all: 'All', none: 'None', nothingOffered: 'Nothing found on the instrument',
    notOffered: 'not found on the instrument', cannotAsk: 'The instrument cannot be asked for a name with “,” or “&”.',
    badText: 'The sign “&” cannot be sent to the instrument.',
    close: 'Close', previous: 'Previous entry', next: 'Next entry', wide: 'Whole window', viewer: 'View',
    opening: 'Opening …', pictureAlt: 'Picture {name}', reportTitle: 'Report {name}',
    pictureMissing: 'Picture {name}: part of the download', noPreview: 'No view for this kind of file',
    noPreviewHint: 'Download it and open it with a program that reads it.', tooLarge: 'Too large to view',
    firstOfSame: 'Several files share this identity; the instrument sends the first of them.',
    kindReport: 'Report', kindPicture: 'Picture', kindCapture: 'Capture', kindOther: 'File',
    packing: ['Packing {n} entry …', 'Packing {n} entries …'], converting: ['Making a PDF of {n} entry …', 'Making PDFs of {n} entries …'],
    part: 'part {i} of {n}', ofTotal: '{size} of {total}', saved: 'Saved as “{name}” ({size})', cancelled: 'Cancelled.',
    leftOut: ['{n} entry is left out: {names}', '{n} entries are left out: {names}'], andMore: '{n} more',
    missing: ['{n} entry is missing from the answer: {names}', '{n} entries are missing from the answer: {names}'],
    whyId: 'its identity holds a sign (“,”, “&”) that cannot be sent', whyName: 'the instrument cannot pack this name',
    whyPlace: 'the instrument cannot pack from this folder', whyCapture: 'a capture has no PDF',
    cannotDeliver: 'Cannot be delivered: {why}.', nothingLeft: 'None of the chosen entries can be delivered.',
    resultFiles: 'result-files',
    errorNetwork: 'The instrument does not answer. Check the connection and try again.',
    errorStatus: 'The instrument could not answer (error {status}).',
    errorModule: 'The instrument could not answer (error {status}). It may not know the module “{module}”.',
    errorTooLong: 'The request is too long for the instrument. Choose fewer entries.',
    errorBroken: 'The answer broke off after {size}. Nothing was saved.',
    errorEmpty: 'The answer is empty: the instrument has delivered none of the chosen entries.',
    errorNoArchive: 'The answer is no whole archive. Nothing was saved.',
    errorNoPdf: 'The answer is no whole PDF. Nothing was saved.',
    errorPage: 'The instrument answered with something else than the list.',
    errorGone: 'The instrument sent no content: the file may have been removed.',
    retry: 'Try again',
  },
  de: {
    language: 'Deutsch',
    title: 'Ergebnisdateien',
    lists: 'Listen', listAll: 'Alle', listRslt: 'Ergebnisse', listProf: 'Profile', listScreen: 'Bildschirmfotos',
    actions: 'Aktionen', filter: 'Filter', advanced: 'Erweitert', view: 'Ansehen', pdf: 'PDF', download: 'Herunterladen',
    refresh: 'Liste neu lesen', switchLanguage: 'Sprache', switchLook: 'Hell oder dunkel',
    find: 'Liste eingrenzen', findHint: 'Name, Test, Port, Datum …', clearFind: 'Suche leeren',
    colName: 'Name', colModule: 'Modul', colMode: 'Betriebsart', colTest: 'Test', colPort: 'Port',
    colDatetime: 'Datum', colRsltype: 'Art', colPath: 'Pfad', colChosen: 'Gewählt',
    sortHint: 'Drücken sortiert; Alt und Pfeiltasten ändern die Breite',
    sortLabel: 'Sortieren nach', ascending: 'aufsteigend', descending: 'absteigend', sorted: 'Sortiert nach {column}, {order}.',
    grid: 'Gespeicherte Dateien. Pfeiltasten bewegen, Leertaste wählt, Eingabe zeigt an, Strg und A wählt alle.',
    chooseAll: 'Alle gezeigten wählen', clearChoice: 'Auswahl aufheben',
    shown: ['{n} Eintrag', '{n} Einträge'], shownOf: '{n} von {all} Einträgen', chosen: '{n} gewählt',
    chosenHidden: '{n} gewählt, davon {hidden} nicht gezeigt',
    lost: ['{n} Eintrag war auf der Seite nicht lesbar.', '{n} Einträge waren auf der Seite nicht lesbar.'],
    chips: 'Aktiver Filter', removeChip: '{name} entfernen', clearFilter: 'Filter aufheben',
    filterRests: 'Der Filter ruht: Diese Liste zeigt alles.', useFilter: 'Gefilterte Ergebnisse zeigen',
    module: 'Modul', mode: 'Betriebsart', test: 'Test', port: 'Port', jobid: 'Auftrag', account: 'Konto', locator: 'Ort',
    type: 'Typ', fname: 'Dateiname enthält', prefix: 'Name beginnt', suffix: 'Name endet',
    modules: 'Module', modes: 'Betriebsarten', tests: 'Tests', ports: 'Ports',
    emptyStored: 'Hier ist noch nichts gespeichert', emptyStoredHint: 'Ergebnisse erscheinen, sobald am Messgerät ein Test gespeichert wurde.',
    emptyFilter: 'Nichts entspricht dem Filter', emptyFilterHint: 'Das Messgerät hat keinen Eintrag mit all diesen Eigenschaften.',
    emptyFind: 'Nichts entspricht „{text}“', emptyFindHint: ['Gesucht wird in dem einen Eintrag dieser Liste.', 'Gesucht wird in den {n} Einträgen dieser Liste.'],
    showAll: 'Alle Ergebnisse zeigen',
    loading: 'Liste wird gelesen …', loadingSize: 'Liste wird gelesen … {size}', loaded: 'Liste gelesen.',
    filterTitle: 'Filter', filterHint: 'Eine Gruppe ohne Haken oder mit allen Haken schränkt nicht ein.',
    filterFor: { rslt: 'Gilt für Ergebnisse.', prof: 'Gilt für Profile.', all: 'Zeigt die passenden Ergebnisse.' },
    advancedTitle: 'Erweiterter Filter', advancedHint: 'Groß- und Kleinschreibung zählt. Leere Felder schränken nicht ein.',
    ok: 'OK', cancel: 'Abbrechen', all: 'Alle', none: 'Keine', nothingOffered: 'Auf dem Messgerät nichts gefunden',
    notOffered: 'auf dem Messgerät nicht gefunden', cannotAsk: 'Nach einem Namen mit „,“ oder „&“ lässt sich das Messgerät nicht fragen.',
    badText: 'Das Zeichen „&“ lässt sich nicht an das Messgerät senden.',
    close: 'Schließen', previous: 'Vorheriger Eintrag', next: 'Nächster Eintrag', wide: 'Ganzes Fenster', viewer: 'Ansicht',
    opening: 'Wird geöffnet …', pictureAlt: 'Bild {name}', reportTitle: 'Bericht {name}',
    pictureMissing: 'Bild {name}: im Download enthalten', noPreview: 'Keine Ansicht für diese Art Datei',
    noPreviewHint: 'Herunterladen und mit einem passenden Programm öffnen.', tooLarge: 'Zu groß für die Ansicht',
    firstOfSame: 'Mehrere Dateien haben dieselbe Kennung; das Messgerät sendet die erste.',
    kindReport: 'Bericht', kindPicture: 'Bild', kindCapture: 'Mitschnitt', kindOther: 'Datei',
    packing: ['{n} Eintrag wird gepackt …', '{n} Einträge werden gepackt …'], converting: ['PDF von {n} Eintrag entsteht …', 'PDFs von {n} Einträgen entstehen …'],
    part: 'Teil {i} von {n}', ofTotal: '{size} von {total}', saved: 'Gespeichert als „{name}“ ({size})', cancelled: 'Abgebrochen.',
    leftOut: ['{n} Eintrag bleibt weg: {names}', '{n} Einträge bleiben weg: {names}'], andMore: '{n} weitere',
    missing: ['{n} Eintrag fehlt in der Antwort: {names}', '{n} Einträge fehlen in der Antwort: {names}'],
    whyId: 'die Kennung enthält ein Zeichen („,“, „&“), das sich nicht senden lässt', whyName: 'diesen Namen kann das Messgerät nicht packen',
    whyPlace: 'aus diesem Ordner kann das Messgerät nicht packen', whyCapture: 'ein Mitschnitt hat kein PDF',
    cannotDeliver: 'Nicht lieferbar: {why}.', nothingLeft: 'Keiner der gewählten Einträge ist lieferbar.',
    resultFiles: 'ergebnisdateien',
    errorNetwork: 'Das Messgerät antwortet nicht. Verbindung prüfen und noch einmal versuchen.',
    errorStatus: 'Das Messgerät konnte nicht antworten (Fehler {status}).',
    errorModule: 'Das Messgerät konnte nicht antworten (Fehler {status}). Vielleicht kennt es das Modul „{module}“ nicht.',
    errorTooLong: 'Die Anfrage ist zu lang für das Messgerät. Weniger Einträge wählen.',
    errorBroken: 'Die Antwort brach nach {size} ab. Nichts wurde gespeichert.',
    errorEmpty: 'Die Antwort ist leer: Das Messgerät hat keinen der gewählten Einträge geliefert.',
    errorNoArchive: 'Die Antwort ist kein vollständiges Archiv. Nichts wurde gespeichert.',
    errorNoPdf: 'Die Antwort ist kein vollständiges PDF. Nichts wurde gespeichert.',
    errorPage: 'Das Messgerät antwortete mit etwas anderem als der Liste.',
    errorGone: 'Das Messgerät sandte keinen Inhalt: Die Datei ist vielleicht entfernt.',
    retry: 'Noch einmal',
  },
};

export const LANGUAGES = Object.keys(TABLES);

function preferred() {
  const wished = [recall('language', null), ...(navigator.languages ?? [navigator.language])];
  return wished.map((tag) => String(tag).slice(0, 2)).find((tag) => tag in TABLES) ?? 'en';
}

export const language = typeof navigator === 'object' ? preferred() : 'en';
const numbers = new Intl.NumberFormat(language);
const plural = new Intl.PluralRules(language);

/** The text named `key` with its {places} filled; numbers are written the language's way. */
export function t(key, values = {}) {
  let entry = TABLES[language][key] ?? TABLES.en[key];
  if (Array.isArray(entry)) entry = entry[plural.select(values.n ?? 0) === 'one' ? 0 : 1];
  return entry.replace(/\{(\w+)\}/g, (place, name) => {
    const value = values[name];
    return typeof value === 'number' ? numbers.format(value) : value ?? place;
  });
}

/** A text out of a group of texts; empty when the group lacks it. */
export const tIn = (group, key) => (TABLES[language][group] ?? TABLES.en[group])[key] ?? '';

export const languageName = (tag) => TABLES[tag].language;

/** A number of bytes as a person reads it. */
export function size(bytes) {
  const units = ['B', 'KB', 'MB', 'GB'];
  let value = bytes;
  let unit = 0;
  while (value >= 1000 && unit < units.length - 1) { value /= 1000; unit += 1; }
  return `${new Intl.NumberFormat(language, { maximumFractionDigits: unit && value < 100 ? 1 : 0 }).format(value)} ${units[unit]}`;
}
