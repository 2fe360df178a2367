// SPDX-License-Identifier: MIT
// Browsers and bundlers fetch the module from beside this file.
import {makeOpen} from './notebook.js';

export {QpsError} from './instance.js';
export const open = makeOpen(async () => {
  const response = await fetch(new URL('./qpsreader.wasm', import.meta.url));
  if (!response.ok) throw new Error(`qpsreader.wasm: ${response.status} ${response.statusText}`);
  return WebAssembly.compile(await response.arrayBuffer());
});
