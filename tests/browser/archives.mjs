// Archives as the instrument sends them, made by zip.
import { execFileSync } from 'node:child_process';
import fs from 'node:fs';
import path from 'node:path';

/** The bytes of an archive of files, { name: content }; a name that ends with "/" is a bare folder. `options` go to zip. */
export function archiveOf(files, ...options) {
  const folder = fs.mkdtempSync('/tmp/archive-');
  for (const [name, content] of Object.entries(files)) {
    fs.mkdirSync(path.dirname(`${folder}/${name}x`), { recursive: true });
    if (!name.endsWith('/')) fs.writeFileSync(`${folder}/${name}`, content);
  }
  execFileSync('zip', ['-qr', ...options, `${folder}.zip`, '.'], { cwd: folder });
  const bytes = fs.readFileSync(`${folder}.zip`);
  for (const made of [folder, `${folder}.zip`]) fs.rmSync(made, { recursive: true });
  return bytes;
}
