// Loads the plug-in given as argument and hands it the events that stand on standard input, one in a line. Every
// answer to a permission request that reaches the client is printed as a line of JSON.
import readline from 'node:readline';
import { pathToFileURL } from 'node:url';

const { default: plugin } = await import(pathToFileURL(process.argv[2]));
const client = {
  async postSessionIdPermissionsPermissionId({ path, body }) {
    process.stdout.write(JSON.stringify({ ...path, ...body }) + '\n');
    return { data: true };
  },
};
const { event: hook } = await plugin({ client, directory: '/project', serverUrl: 'http://127.0.0.1:1/' });
for await (const line of readline.createInterface({ input: process.stdin })) await hook({ event: JSON.parse(line) });
