// SPDX-License-Identifier: MIT
// Renders numbers by number formats: JSON lines of [format, number] come in, of texts go out.
import { createInterface } from 'node:readline';
import { format } from 'numfmt';

for await (const line of createInterface({ input: process.stdin })) {
  const [pattern, number] = JSON.parse(line);
  console.log(JSON.stringify(format(pattern, number, { dateErrorThrows: false })));
}
