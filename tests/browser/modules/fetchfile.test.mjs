// The bytes of a stored file.
import assert from 'node:assert/strict';
import { test } from 'node:test';
import { stripLead } from '../../../web/js/fileman/answers/fetchfile.js';
import { sniff } from '../../../web/js/fileman/answers/kinds.js';

const bytesOf = (binary) => Uint8Array.from(binary, (char) => char.charCodeAt(0));

test('the bytes tell what a file is', () => {
  assert.equal(sniff(bytesOf('\x89PNG\r\n')), 'image/png');
  assert.equal(sniff(bytesOf(' <!DOCTYPE html>')), 'text/html');
  assert.equal(sniff(bytesOf('\xd4\xc3\xb2\xa1')), '');
  assert.deepEqual([...stripLead(bytesOf('\r\n\r\n\n<'))], [10, 60]);
  assert.deepEqual([...stripLead(bytesOf('\r\n<'))], [13, 10, 60]);
});
