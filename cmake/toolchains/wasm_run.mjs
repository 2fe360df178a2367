// SPDX-License-Identifier: MIT
// wasm_run.mjs PROGRAM [ARG...]: runs a program for WASI in Node, with this machine's files.
import {readFileSync} from 'node:fs';
import process from 'node:process';
import {WASI} from 'node:wasi';

const args = process.argv.slice(2);
const wasi = new WASI({version: 'preview1', args, env: process.env, preopens: {'/': '/'},
                       returnOnExit: true});
const {instance} = await WebAssembly.instantiate(
    readFileSync(args[0]), {wasi_snapshot_preview1: wasi.wasiImport});
process.exitCode = wasi.start(instance);
