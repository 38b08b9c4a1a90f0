// The token that an address brings.
import assert from 'node:assert/strict';
import { test } from 'node:test';
import { tokenOf } from '../../../ctl/web/token.mjs';

test('A token keeps every character of base64', () => {
  assert.equal(tokenOf('#token=ab+c/d='), 'ab+c/d=');
  assert.equal(tokenOf('#token=ab%2Bc%2Fd%3D'), 'ab+c/d=');
  assert.equal(tokenOf('#token=100%'), '100%');
});

test('Without a token there is none', () => {
  for (const fragment of ['', '#', '#lock', '#other=token=x']) assert.equal(tokenOf(fragment), null);
});
