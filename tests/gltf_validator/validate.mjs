// Gives glTF files to the Khronos validator. Prints every error and warning; the exit status is 1 when
// there is one.
// Usage: node validate.mjs FILE.glb...

import { readFileSync } from 'node:fs';
import { basename } from 'node:path';
import { validateBytes } from 'gltf-validator';

const kinds = ['error', 'warning'];  // by the validator's number of a severity

let found = 0;
for (const name of process.argv.slice(2)) {
    const report = await validateBytes(new Uint8Array(readFileSync(name)), { uri: basename(name) });
    const { messages, numErrors, numWarnings, truncated } = report.issues;
    for (const { severity, code, message, pointer } of messages) {
        if (severity < kinds.length) {
            console.log(`${name}: ${kinds[severity]}: ${code}: ${message} ${pointer ?? ''}`);
        }
    }
    if (truncated) {
        console.log(`${name}: there is more`);
    }
    found += numErrors + numWarnings;
}
process.exit(found > 0 ? 1 : 0);
