// What an archive lacks.
import assert from 'node:assert/strict';
import { test } from 'node:test';
import { membersOf } from '../../../web/js/fileman/answers/archive.js';
import { lacksOfDownload, lacksOfPdfs } from '../../../web/js/fileman/delivery/missing.js';
import { archiveOf } from '../archives.mjs';

const archive = (...given) => new Blob([archiveOf(...given)]);
const entry = (file, more = {}) => ({ name: file.split('.', 1)[0], path: `/home/a/${file}`, port: 'P1', ...more });

test('a download tells which entries it lacks, and which may have replaced each other', async () => {
  const a = entry('a.html');
  const profile = entry('a.html', { path: '/home/profiles/a.html' });
  const otherPort = entry('a.html', { path: '/home/b/a.html', port: 'P2' });
  const picture = entry('a.png', { port: 'P2' });
  const named = entry('Grüße [1].html');
  const long = entry('l', { name: 'l'.repeat(255), path: `/home/2g5/${'l'.repeat(255)}` });
  const cases = [
    // archive, entries, missing, shared
    [{ '[a]-[t]-[P1]-[m]/a.html': '' }, [a], [], []],
    [{ '[a]-[t]-[P1]-[m]/': '', 'other/a.html': '' }, [a], [a], []],
    [{ '[a]-[t]-[P1]-[m]/a_files/a.html': '', '[ab]-[t]/a.html': '' }, [a], [a], []],
    [{ '[a]-[t]-[P1]-[m]/a.html': '' }, [a, profile], [], [a, profile]],
    [{ '[a]-[t]-[P1]-[m]/a.html': '', '[a]-[t]-[P2]-[m]/a.html': '' }, [a, otherPort], [], []],
    [{ '[a]-[t]-[P1]-[m]/a.html': '', '[a]-[t]-[P1]-[m]/a.png': '' }, [a, picture], [], [a, picture]],
    [{ '[a]-[t]-[P2]-[m]/a.png': '' }, [a, picture], [a], []],
    [{ '[Grüße [1]]-[t]/Grüße [1].html': '', '[Grobe [1]]-[t]/': '' }, [named, a], [a], []],
    [{ [`[${'l'.repeat(254)}/mtie/data`]: '' }, [long], [], []],
  ];
  for (const [files, entries, missing, shared] of cases) {
    const lacks = lacksOfDownload(await membersOf(archive(files)), entries);
    assert.deepEqual(lacks, { missing, shared }, JSON.stringify(files));
  }
  const whole = archive({ '[a]-[]-[]-[]/a.html': '' });
  assert.equal(await membersOf(whole.slice(0, -30)), null);
  const names = (members) => members.map(({ name }) => name);
  assert.deepEqual(names(await membersOf(archive({ 'a.html': '' }, '-fz'))), ['a.html']);
});

test('an archive of PDFs tells which are missing or broken, and which share a name', async () => {
  const pdf = `%PDF-1.4\n${'x'.repeat(5000)}\n%%EOF\n`;
  const [whole, half, empty, gone] = ['whole.html', 'half.html', 'empty.html', 'gone.html'].map((file) => entry(file));
  const twin = entry('whole.png');
  const files = { 'whole.pdf': pdf, 'half.pdf': pdf.slice(0, 3000), 'empty.pdf': '', 'other.pdf': pdf };
  const blob = archive(files, '-0'); // Node 18 cannot inflate what zip packs
  const lacks = await lacksOfPdfs(blob, await membersOf(blob), [whole, half, empty, gone, twin]);
  assert.deepEqual(lacks, { missing: [half, empty, gone], shared: [whole, twin] });
});
