/*
 * Reads the options of the two filter pages from their text. The pages do not escape names in attributes, so the
 * document that a browser builds from them may have wrong names.
 */
import { isStrict } from '../answers/strict.js';
import { toBinary, toText, unescape } from '../answers/encoding.js';

const GROUPS = [
  { key: 'module', fieldset: 'field_module', prefix: 'id_module_opt_' },
  { key: 'mode', fieldset: 'field_mode', prefix: 'id_mode_opt_' },
  { key: 'test', fieldset: 'field_test', prefix: 'id_test_opt_' },
  { key: 'port', fieldset: 'field_port', prefix: 'id_port_opt_' },
];
const ADVANCED = [
  { key: 'jobid', input: 'adv_jobid' },
  { key: 'account', input: 'adv_account' },
  { key: 'fname', input: 'adv_file_name' },
  { key: 'prefix', input: 'adv_prefix' },
  { key: 'suffix', input: 'adv_suffix' },
];

function between(text, start, end, from = 0) {
  const at = text.indexOf(start, from);
  if (at < 0) return null;
  const stop = text.indexOf(end, at + start.length);
  return stop < 0 ? null : text.slice(at + start.length, stop);
}

/**
 * Returns the names in one fieldset. The id, the value and the label of an option repeat the name. This shows where the
 * name ends.
 */
function readOptions(field, prefix) {
  const names = [];
  for (const piece of field.split(`<input type="checkbox" id="${prefix}`).slice(1)) {
    const end = piece.lastIndexOf('</input></div>');
    const body = end < 0 ? piece : piece.slice(0, end);
    for (let at = body.indexOf('" value="'); at >= 0; at = body.indexOf('" value="', at + 1)) {
      const name = body.slice(0, at);
      if (body.startsWith(`${name}" `, at + 9) && body.endsWith(`>${name}`)) {
        names.push(name);
        break;
      }
    }
  }
  return names;
}

/** Returns the names in one fieldset of a strict answer, where the id of an option is the percent-encoded name. */
function readStrictOptions(field, prefix) {
  const ids = field.matchAll(/<input type="checkbox" id="([^"]*)"/g);
  return [...ids].map(([, id]) => unescape(id).slice(prefix.length));
}

/**
 * Returns the groups of the primary filter page: [{ key, options: [{ value (binary), text }] }]. Options without a name
 * are left out, because a request with an empty name means "no choice". Returns null for any other page.
 */
export function parsePrimary({ text, raw }) {
  if (!text.includes('id="pri_form"')) return null;
  return GROUPS.map(({ key, fieldset, prefix }) => {
    const field = between(text, `<fieldset id="${fieldset}"`, '</fieldset>') ?? '';
    const names = isStrict() ? readStrictOptions(field, prefix) : readOptions(field, prefix);
    const options = names
      .filter(Boolean)
      .map((name) => (raw || isStrict() ? { value: name, text: toText(name) } : { value: toBinary(name), text: name }));
    return { key, options };
  });
}

/** Returns the keys of the fields of the advanced filter page, in their order. Returns null for any other page. */
export function parseAdvanced({ text }) {
  if (!text.includes('id="adv_form"')) return null;
  return ADVANCED.filter(({ input }) => text.includes(`id="${input}"`)).map(({ key }) => key);
}
