// Builds the page into the folder given: bundles, names that hold a hash of what is in them, a gzip copy beside each
// file that gets smaller by it. The folder appears whole or stays as it was.
import { createHash } from 'node:crypto';
import { mkdirSync, readdirSync, readFileSync, renameSync, rmSync, writeFileSync } from 'node:fs';
import { dirname, join, resolve } from 'node:path';
import { fileURLToPath } from 'node:url';
import { gzipSync } from 'node:zlib';
import { build } from 'esbuild';
import { minify } from 'terser';

const here = dirname(fileURLToPath(import.meta.url));
const target = process.argv[2] && resolve(process.argv[2]);
if (!target) {
  console.error('usage: build FOLDER');
  process.exit(2);
}

const files = new Map();
const hash = (content) => createHash('sha256').update(content).digest('hex').slice(0, 10);

/** Takes a file under a name with its hash; returns the address it has on the page. */
function asset(name, content) {
  const address = `/assets/${name.replace(/(\.\w+)$/, `.${hash(content)}$1`)}`;
  files.set(address, content);
  return address;
}

async function bundle(entry, extra = {}) {
  const result = await build({
    absWorkingDir: here,
    entryPoints: [entry],
    bundle: true,
    minify: true,
    write: false,
    target: ['es2022'],
    format: 'esm',
    legalComments: 'none',
    inject: ['src/jsx.ts'],
    tsconfigRaw: { compilerOptions: { jsx: 'react', jsxFactory: 'h', jsxFragmentFactory: 'Fragment' } },
    logLevel: 'warning',
    ...extra,
  });
  return result.outputFiles[0].contents;
}

// The names of texts are for people who read the sources: on the line a text has a number, and a table is a list.
const tables = Object.fromEntries(
  readdirSync(join(here, 'strings')).map((file) => [file, JSON.parse(readFileSync(join(here, 'strings', file), 'utf8'))]),
);
const numbers = new Map();
const numbered = (code) =>
  code.replace(/(\w?)"(\w+(?:\.\w+)+)"/g, (all, before, key) => {
    if (!(key in tables['en.json'])) return all;
    if (!numbers.has(key)) numbers.set(key, numbers.size);
    return `${before && `${before} `}${numbers.get(key)}`;
  });
/** Once more, since terser's script is a kilobyte less on the line. */
const shortened = async (code) => (await minify(numbered(Buffer.from(code).toString()), { module: true, compress: { passes: 3 } })).code;
const script = asset('page.js', Buffer.from(await shortened(await bundle('src/main.tsx'))));
const unsaid = Object.keys(tables['en.json']).filter((key) => !numbers.has(key));
if (unsaid.length > 0) {
  console.error(`strings: nobody says ${unsaid.join(', ')}`);
  process.exit(1);
}
const strings = Object.entries(tables)
  .map(([file, table]) => {
    const texts = [...numbers.keys()].map((key) => (typeof table[key] === 'string' ? table[key] : Object.values(table[key])));
    return `data-${file.replace('.json', '')}="${asset(file, Buffer.from(JSON.stringify(texts)))}"`;
  })
  .join(' ');
const style = asset('style.css', await bundle('src/style.css'));

const html = readFileSync(join(here, 'index.html'), 'utf8')
  .replace('{{strings}}', strings)
  .replace('{{style}}', style)
  .replace('{{script}}', script);
files.set('/index.html', Buffer.from(html));

// The workbench is for who writes templates: a page of its own, in which the other is not, nor kept by it.
const author = readFileSync(join(here, 'workbench.html'), 'utf8')
  .replace('{{style}}', style)
  .replace('{{workbenchStyle}}', asset('workbench.css', await bundle('src/workbench/workbench.css')))
  .replace('{{workbench}}', asset('workbench.js', await bundle('src/workbench/main.tsx')));
const forAuthors = [...files.keys()].filter((address) => address.includes('workbench'));

files.set('/manifest.webmanifest', readFileSync(join(here, 'manifest.webmanifest')));
for (const icon of readdirSync(join(here, 'icons'))) files.set(`/${icon}`, readFileSync(join(here, 'icons', icon)));

const shell = [...files.keys()].filter((address) => !forAuthors.includes(address)).map((address) => (address === '/index.html' ? '/' : address));
const define = { shellFiles: JSON.stringify(shell), shellVersion: JSON.stringify(hash([...files.values()].map(hash).join())) };
files.set('/workbench.html', Buffer.from(author));
files.set('/sw.js', await bundle('src/sw.ts', { define, format: 'iife' }));

const fresh = `${target}.new`;
rmSync(fresh, { recursive: true, force: true });
for (const [address, content] of files) {
  const path = join(fresh, address);
  mkdirSync(dirname(path), { recursive: true });
  writeFileSync(path, content);
  const small = gzipSync(content, { level: 9 });
  if (small.length < content.length * 0.95) writeFileSync(`${path}.gz`, small);
}
rmSync(target, { recursive: true, force: true });
mkdirSync(dirname(target), { recursive: true });
renameSync(fresh, target);

const packed = (address) => gzipSync(files.get(address), { level: 9 }).length;
const english = [...files.keys()].find((address) => address.includes('/en.'));
const total = packed(script) + packed(style) + packed(english);
console.log(`page: ${packed(script)} script + ${packed(style)} style + ${packed(english)} texts = ${total} bytes, compressed`);
