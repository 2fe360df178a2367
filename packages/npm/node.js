// SPDX-License-Identifier: MIT
// In Node the module lies beside this file.
import {readFile} from 'node:fs/promises';

import {makeOpen} from './notebook.js';

export {QpsError} from './instance.js';
export const open = makeOpen(async () =>
    WebAssembly.compile(await readFile(new URL('./qpsreader.wasm', import.meta.url))));
