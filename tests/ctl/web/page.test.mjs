// The page is one file that asks nobody for another.
import assert from 'node:assert/strict';
import { readFileSync } from 'node:fs';
import { test } from 'node:test';
import vm from 'node:vm';

const page = readFileSync(process.env.TOLVANE_PAGE, 'utf8');
const [, script] = page.match(/<script type="module">\n([^]*)<\/script>/);

test('Nothing is fetched from elsewhere', () => {
  for (const sign of [/\bsrc\s*=/, /href="(?!data:)/, /url\(/, /@import/, /\bimport\b/, /\bfetch\(/, /XMLHttpRequest/, /https?:\/\/(?!www\.w3\.org\/2000\/svg)/]) {
    assert.doesNotMatch(page, sign);
  }
});

test('The policy of the server lets it run: no handlers in attributes, no text that becomes code', () => {
  for (const sign of [/<[a-z]+[^>]*\son[a-z]+=/, /\beval\(/, /new Function/, /innerHTML/, /document\.write/]) assert.doesNotMatch(page, sign);
});

test('All parts are in it, and the script is a script', () => {
  for (const mark of ['/*page.css*/', '/*scripts*/', '\nexport ']) assert.ok(!page.includes(mark), mark);
  assert.ok(page.includes(readFileSync(new URL('../../../ctl/web/page.css', import.meta.url), 'utf8')));
  assert.equal(script.match(/^class Matrix \{/gm).length, 1);
  new vm.Script(`(() => {${script}})`);
});

test('Every element that the script looks for by its id is there, once', () => {
  const wanted = [...script.matchAll(/\bfind\('([\w-]+)'\)/g)].map(([, id]) => id);
  assert.ok(wanted.length > 20);
  for (const id of new Set(wanted)) assert.equal(page.split(` id="${id}"`).length, 2, id);
});
