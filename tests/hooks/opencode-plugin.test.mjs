// Loads the generated plug-in like OpenCode does, between a stand-in for the application (its socket) and one for
// OpenCode's server. Arguments: the plug-in, the socket's path.
import assert from 'node:assert/strict';
import fs from 'node:fs';
import http from 'node:http';
import net from 'node:net';
import path from 'node:path';
import test from 'node:test';
import { pathToFileURL } from 'node:url';

const [pluginPath, socketPath] = process.argv.slice(2);
const limit = 30000; // only ends a failure

// The plug-in's own clock: its timers run when a test says so.
const realSetTimeout = globalThis.setTimeout;
const timers = new Set();
globalThis.setTimeout = (step, delay) => {
  const timer = { step, delay, unref() {} };
  timers.add(timer);
  return timer;
};
const realClearTimeout = globalThis.clearTimeout;
globalThis.clearTimeout = (timer) => {
  if (!timers.delete(timer)) realClearTimeout(timer);
};
function elapse(milliseconds) {
  for (const timer of [...timers]) {
    timer.delay -= milliseconds;
    if (timer.delay <= 0 && timers.delete(timer)) timer.step();
  }
}

async function until(condition, what) {
  const end = Date.now() + limit;
  while (!condition()) {
    if (Date.now() > end) assert.fail(`waited in vain for ${what}`);
    await new Promise((done) => realSetTimeout(done, 2));
  }
}

// Every connection with what came over it. The plug-in's end is answered or closed by the test, or kept.
class Application {
  connections = [];
  keepOpen = false;

  async start() {
    fs.mkdirSync(path.dirname(socketPath), { recursive: true });
    fs.rmSync(socketPath, { force: true });
    this.server = net.createServer({ allowHalfOpen: true }, (socket) => {
      const connection = { socket, text: '', closed: false };
      this.connections.push(connection);
      socket.setEncoding('utf8');
      socket.on('data', (chunk) => (connection.text += chunk));
      socket.on('end', () => {
        if (!this.keepOpen) socket.end();
      });
      socket.on('error', () => {});
      socket.on('close', () => (connection.closed = true));
    });
    await new Promise((done) => this.server.listen(socketPath, done));
  }

  stop() {
    for (const { socket } of this.connections) socket.destroy();
    return new Promise((done) => this.server.close(done));
  }

  get events() {
    return this.connections.filter(({ text }) => text.endsWith('\n')).map(({ text }) => JSON.parse(text));
  }

  async received(count) {
    await until(() => this.events.length >= count, `${count} event(s), got ${JSON.stringify(this.events)}`);
    return this.events;
  }
}

class OpenCodeServer {
  requests = [];
  authorization = undefined;
  status = 200;

  async start() {
    this.server = http.createServer((request, response) => {
      let body = '';
      request.on('data', (chunk) => (body += chunk));
      request.on('end', () => {
        const { method, url, headers } = request;
        this.requests.push({ method, url, headers, body });
        const refused = this.authorization && headers.authorization !== this.authorization;
        response.writeHead(refused ? 401 : this.status, { 'Content-Type': 'application/json' });
        response.end('true');
      });
    });
    await new Promise((done) => this.server.listen(0, '127.0.0.1', done));
    return `http://127.0.0.1:${this.server.address().port}/`;
  }

  stop() {
    this.server.closeAllConnections();
    return new Promise((done) => this.server.close(done));
  }
}

let copies = 0;
// A module of its own for every test, so that none sees what another left.
async function loadPlugin() {
  return (await import(`${pathToFileURL(pluginPath)}?copy=${++copies}`)).default;
}

// Runs the body with everything started, and stops it whatever happens.
async function inWorld(body, options = {}) {
  const application = new Application();
  const server = new OpenCodeServer();
  const serverUrl = await server.start();
  if (!options.absent) await application.start();
  Object.assign(process.env, options.environment ?? {});
  try {
    const plugin = await loadPlugin();
    const input = { client: options.client, serverUrl: new URL(serverUrl), directory: '/plug/in', ...options.input };
    const { event: hook } = await plugin(input);
    const emit = (type, properties, id) => hook({ event: { id, type, properties } });
    await body({ application, server, emit, plugin, input, hook });
  } finally {
    for (const name of Object.keys(options.environment ?? {})) delete process.env[name];
    timers.clear();
    if (!options.absent) await application.stop();
    await server.stop();
  }
}

const session = 'ses_1';
const common = { provider: 'opencode', cwd: '/plug/in', sessionId: 'opencode-ses_1' };
const bash = { type: 'tool', tool: 'bash', sessionID: session };
const text = (messageID, value) => ({
  sessionID: session,
  part: { type: 'text', messageID, sessionID: session, text: value },
});
const tool = (status, input, name = 'bash') => ({
  sessionID: session,
  part: { ...bash, tool: name, state: { status, input } },
});
const role = (id, value) => ({ sessionID: session, info: { id, role: value } });
const idle = ['session.idle', { sessionID: session }];
const asked = (more = {}) => ({
  id: 'per_1',
  sessionID: session,
  permission: 'bash',
  patterns: ['ls /nonexistent', 'exit 3'],
  ...more,
});

const rows = [
  {
    name: 'a session begins with its own directory, which later events carry',
    given: [['session.created', { sessionID: session, info: { id: session, directory: '/project' } }], idle],
    sent: [
      { ...common, cwd: '/project', type: 'agentStarted', message: 'OpenCode started' },
      { ...common, cwd: '/project', type: 'responding', message: '' },
    ],
  },
  {
    name: 'a session without a directory has the plug-in\'s',
    given: [['session.created', { info: { id: session } }]],
    sent: [{ ...common, type: 'agentStarted', message: 'OpenCode started' }],
  },
  {
    name: 'a session without an id is passed over',
    given: [['session.created', {}], ['session.deleted', { info: {} }], ['session.updated', {}], idle],
    sent: [{ ...common, type: 'responding', message: '' }],
  },
  {
    name: 'a deleted session is forgotten with what it said',
    given: [
      ['message.part.updated', text('m1', 'words')],
      ['session.deleted', { sessionID: session, info: { id: session } }],
      idle,
    ],
    sent: [
      { ...common, type: 'agentStopped', message: 'OpenCode stopped' },
      { ...common, type: 'responding', message: '' },
    ],
  },
  {
    name: 'an update moves the session',
    given: [['session.updated', { info: { id: session, directory: '/moved', time: { updated: 1 } } }], idle],
    sent: [{ ...common, cwd: '/moved', type: 'responding', message: '' }],
  },
  {
    name: 'an archived session has stopped',
    given: [['session.updated', { info: { id: session, time: { archived: 5 } } }]],
    sent: [{ ...common, type: 'agentStopped', message: 'OpenCode stopped' }],
  },
  {
    name: 'only an idle status answers',
    given: [
      ['session.status', { sessionID: session, status: { type: 'busy' } }],
      ['session.status', { sessionID: session, status: { type: 'idle' } }],
    ],
    sent: [{ ...common, type: 'responding', message: '' }],
  },
  {
    name: 'the deltas of an answer are collected, collapsed and cut',
    given: [
      ['message.part.delta', { sessionID: session, field: 'text', delta: '  It \n' }],
      ['message.part.delta', { sessionID: session, field: 'reasoning', delta: 'hidden' }],
      ['message.part.delta', { sessionID: session, field: 'text', delta: '\t failed. ' + 'x'.repeat(300) }],
      idle,
    ],
    sent: [{ ...common, type: 'responding', message: '', say: 'It failed. ' + 'x'.repeat(169) }],
  },
  {
    name: 'a user\'s text is a prompt of at most 80 characters and clears what was said',
    given: [
      ['message.part.updated', text('a', 'old words')],
      ['message.updated', role('u', 'user')],
      ['message.part.updated', text('u', '  ' + 'word \n '.repeat(40))],
      idle,
    ],
    sent: [
      { ...common, type: 'thinking', message: 'word '.repeat(16) },
      { ...common, type: 'responding', message: '' },
    ],
  },
  {
    name: 'an agent\'s text is what it says, at most 180 characters',
    given: [
      ['message.updated', role('a', 'assistant')],
      ['message.part.updated', text('a', ' one\n\ntwo ' + 'y'.repeat(400))],
      idle,
    ],
    sent: [{ ...common, type: 'responding', message: '', say: 'one two ' + 'y'.repeat(172) }],
  },
  {
    name: 'a cut never halves a character',
    given: [['message.updated', role('u', 'user')], ['message.part.updated', text('u', 'a' + '🐾'.repeat(100))]],
    sent: [{ ...common, type: 'thinking', message: 'a' + '🐾'.repeat(79) }],
  },
  {
    name: 'a tool before and after',
    given: [
      ['message.part.delta', { sessionID: session, field: 'text', delta: 'Looking' }],
      ['message.part.updated', tool('pending', {})],
      ['message.part.updated', tool('running', { command: 'ls', description: 'lists' })],
      ['message.part.updated', tool('completed', { command: 'ls' })],
      ['message.part.updated', tool('error', { command: 'ls' })],
      ['message.part.updated', tool('unheard of', { command: 'ls' })],
    ],
    sent: [
      { ...common, type: 'coding', message: '', toolName: 'Bash', say: 'Looking' },
      { ...common, type: 'coding', message: '', toolName: 'Bash', command: 'ls', say: 'Looking' },
      { ...common, type: 'coding', message: '', toolName: 'Bash', command: 'ls', say: 'Looking', phase: 'post' },
      { ...common, type: 'coding', message: '', toolName: 'Bash', command: 'ls', say: 'Looking', phase: 'post' },
    ],
  },
  ...[
    ['filePath', { filePath: '/a', path: '/b' }, '/a'],
    ['file_path', { file_path: '/a', pattern: 'p' }, '/a'],
    ['path', { pattern: 'p', path: '/b' }, '/b'],
    ['pattern', { query: 'q', pattern: 'p' }, 'p'],
    ['query', { url: 'u', query: 'q' }, 'q'],
    ['url', { url: 'http://x/' }, 'http://x/'],
  ].map(([key, input, command]) => ({
    name: `a tool's ${key} is its command`,
    given: [['message.part.updated', tool('running', input, 'read')]],
    sent: [{ ...common, type: 'coding', message: '', toolName: 'Read', command }],
  })),
  {
    name: 'a tool without a name',
    given: [['message.part.updated', tool('running', { command: 'ls' }, '')]],
    sent: [{ ...common, type: 'coding', message: '', toolName: 'Tool', command: 'ls' }],
  },
  {
    name: 'what is not understood disturbs nobody',
    given: [
      ['plugin.added', { anything: 1 }],
      ['toString', {}],
      ['message.part.updated', {}],
      ['message.part.updated', { part: null }],
      ['message.part.updated', { part: { type: 'step-start', sessionID: session } }],
      ['message.updated', undefined],
      ['permission.asked', null],
      ['permission.asked', { id: 'per_0', sessionID: session, permission: 'bash', patterns: 7 }],
      ['permission.replied', { requestID: 'nobody' }],
      ['session.created', 'text'],
      idle,
    ],
    sent: [{ ...common, type: 'responding', message: '' }],
  },
];

for (const { name, given, sent } of rows) {
  test(name, () =>
    inWorld(async ({ application, emit }) => {
      for (const [type, properties] of given) await emit(type, properties);
      // Connections come in the order in which they are made, so after this one there is none left.
      await emit('session.idle', { sessionID: 'last' });
      const { connections } = application;
      await until(
        () => connections.at(-1)?.text.includes('opencode-last') && connections.every(({ text }) => text.endsWith('\n')),
        'the last event',
      );
      assert.deepEqual(application.events.slice(0, -1), sent);
    }));
}

test('the module has nothing but the one function', async () => {
  const module = await import(pathToFileURL(pluginPath));
  assert.deepEqual(Object.entries(module).map(([name, value]) => [name, typeof value]), [['default', 'function']]);
});

for (const [others, kept] of [[299, true], [300, false]]) {
  test(`the role of a message is ${kept ? 'kept' : 'forgotten'} after ${others} others`, () =>
    inWorld(async ({ application, emit }) => {
      await emit('message.updated', role('first', 'user'));
      for (let i = 0; i < others; ++i) await emit('message.updated', role(`other${i}`, 'assistant'));
      await emit('message.part.updated', text('first', 'hello'));
      if (kept) {
        const [event] = await application.received(1);
        assert.equal(event.type, 'thinking');
      }
      await emit(...idle);
      const events = await application.received(kept ? 2 : 1);
      assert.equal(events.at(-1).say, kept ? undefined : 'hello');
    }));
}

const permissions = [
  ['bash', asked(), 'Bash', 'ls /nonexistent && exit 3'],
  ['edit', asked({ permission: 'edit', patterns: ['a.txt', 'b.txt'] }), 'Edit', 'a.txt'],
  ['one without patterns', asked({ permission: 'doom_loop', patterns: [] }), 'Doom_loop', undefined],
  ['one without a name', asked({ permission: undefined, patterns: ['x'] }), 'Tool', 'x'],
];
for (const [name, properties, toolName, command] of permissions) {
  test(`the request for ${name}`, () =>
    inWorld(async ({ application, emit }) => {
      await emit('permission.asked', properties);
      const [event] = await application.received(1);
      assert.deepEqual(event, {
        ...common,
        type: 'approvalRequired',
        message: command ?? toolName,
        toolName,
        ...(command ? { command } : {}),
      });
    }));
}

// A client that records how it was asked and answers as told.
function makeClient(result) {
  const calls = [];
  const reply = async (options) => {
    calls.push(options);
    if (result instanceof Error) throw result;
    return result;
  };
  return { calls, reply };
}

async function answered({ application, emit }, verdict) {
  await emit('permission.asked', asked());
  await application.received(1);
  application.connections[0].socket.write(verdict);
  await until(() => application.connections[0].closed, 'the end of the connection');
}

for (const [approval, reply] of [['granted', 'once'], ['denied', 'reject'], ['anything else', 'reject']]) {
  const verdict = JSON.stringify({ approval }) + '\n';

  test(`${approval} goes through the client that was handed in`, async () => {
    const { calls, reply: post } = makeClient({ data: true });
    const client = { postSessionIdPermissionsPermissionId: post };
    await inWorld(
      async (world) => {
        await answered(world, verdict);
        await until(() => calls.length > 0, 'the call');
        assert.deepEqual(calls, [{ path: { id: session, permissionID: 'per_1' }, body: { response: reply } }]);
        assert.deepEqual(world.server.requests, []);
      },
      { client },
    );
  });

  test(`${approval} goes to the server where there is no client`, () =>
    inWorld(async (world) => {
      await world.emit('session.created', { info: { id: session, directory: '/a b/ü' } });
      await world.application.received(1);
      await world.emit('permission.asked', asked());
      await world.application.received(2);
      world.application.connections[1].socket.write(verdict);
      await until(() => world.server.requests.length > 0, 'the request');
      const [{ method, url, headers, body }] = world.server.requests;
      assert.deepEqual([method, url, JSON.parse(body)], ['POST', '/permission/per_1/reply', { reply }]);
      assert.equal(headers['content-type'], 'application/json');
      assert.equal(headers['x-opencode-directory'], '%2Fa%20b%2F%C3%BC');
      assert.equal(headers.authorization, undefined);
    }));
}

const failing = [
  ['says so', { error: { name: 'NotFound' } }],
  ['answers with an error status', { ok: false }],
  ['throws', new Error('broken')],
  ['answers nothing', undefined],
];
for (const [how, result] of failing) {
  test(`the server is asked when the client ${how}`, async () => {
    const first = makeClient(result);
    const second = makeClient(result);
    const client = { postSessionIdPermissionsPermissionId: first.reply, _client: { post: second.reply } };
    await inWorld(
      async (world) => {
        await answered(world, '{"approval":"granted"}\n');
        await until(() => world.server.requests.length > 0, 'the request');
        assert.deepEqual([first.calls.length, second.calls.length], [1, 1]);
        assert.deepEqual(second.calls[0].body, { reply: 'once' });
        assert.equal(second.calls[0].url, '/permission/per_1/reply');
      },
      { client },
    );
  });
}

for (const [user, name] of [['me', 'me'], [undefined, 'opencode']]) {
  test(`a server with a password is told it, user ${name}`, async () => {
    const environment = { OPENCODE_SERVER_PASSWORD: 'pass:wörd' };
    if (user) environment.OPENCODE_SERVER_USERNAME = user;
    await inWorld(
      async (world) => {
        world.server.authorization = 'Basic ' + Buffer.from(`${name}:pass:wörd`).toString('base64');
        await answered(world, '{"approval":"granted"}\n');
        await until(() => world.server.requests.length > 0, 'the request');
        assert.equal(world.server.requests[0].headers.authorization, world.server.authorization);
      },
      { environment },
    );
  });
}

test('a refusing server and a dead one are borne', async () => {
  for (const serverUrl of [undefined, 'no address', 'http://127.0.0.1:1/']) {
    await inWorld(
      async (world) => {
        world.server.status = 500;
        await answered(world, '{"approval":"granted"}\n');
        await world.emit(...idle);
        await world.application.received(2);
      },
      { input: serverUrl === undefined ? {} : { serverUrl } },
    );
  }
});

const noAnswers = [
  ['the application closes the connection', (socket) => socket.end()],
  ['the application breaks the connection', (socket) => socket.destroy()],
  ['the answer is no JSON', (socket) => socket.write('granted\n')],
  ['the answer says nothing of an approval', (socket) => socket.write('{"approval":null}\n')],
  ['another answered', (socket, emit) => emit('permission.replied', { sessionID: session, requestID: 'per_1' })],
  ['the session is idle again', (socket, emit) => emit(...idle)],
  ['the session is deleted', (socket, emit) => emit('session.deleted', { info: { id: session } })],
];
for (const [what, happen] of noAnswers) {
  test(`OpenCode hears nothing when ${what}`, async () => {
    const { calls, reply } = makeClient({ data: true });
    await inWorld(
      async ({ application, server, emit }) => {
        await emit('permission.asked', asked());
        await application.received(1);
        await happen(application.connections[0].socket, emit);
        await until(() => application.connections[0].closed, 'the end of the connection');
        // A second round shows that the first one is over.
        const before = application.connections.length;
        await emit('permission.asked', asked({ id: 'per_2' }));
        await until(() => application.connections.slice(before).some(({ text }) => text.includes('approval')), 'it');
        application.connections.at(-1).socket.write('{"approval":"denied"}\n');
        await until(() => calls.length > 0, 'the second answer');
        assert.deepEqual(calls.map(({ path: { permissionID } }) => permissionID), ['per_2']);
        assert.deepEqual(server.requests, []);
      },
      { client: { postSessionIdPermissionsPermissionId: reply } },
    );
  });
}

test('an answer that the application closes without a line end counts', async () => {
  const { calls, reply } = makeClient({ data: true });
  await inWorld(
    async ({ application, emit }) => {
      await emit('permission.asked', asked());
      await application.received(1);
      application.connections[0].socket.end('{"approval":"granted"}');
      await until(() => calls.length > 0, 'the answer');
    },
    { client: { postSessionIdPermissionsPermissionId: reply } },
  );
});

test('two requests at once are answered each', async () => {
  const { calls, reply } = makeClient({ data: true });
  await inWorld(
    async ({ application, emit }) => {
      await emit('permission.asked', asked({ patterns: ['one'] }));
      await emit('permission.asked', asked({ id: 'per_2', patterns: ['two'] }));
      await application.received(2);
      const named = (command) => application.connections.find(({ text }) => JSON.parse(text).command === command);
      named('two').socket.write('{"approval":"denied"}\n');
      await until(() => calls.length === 1, 'the second answer');
      named('one').socket.write('{"approval":"granted"}\n');
      await until(() => calls.length === 2, 'the first answer');
      assert.deepEqual(
        calls.map(({ path: { permissionID }, body: { response } }) => [permissionID, response]),
        [['per_2', 'reject'], ['per_1', 'once']],
      );
    },
    { client: { postSessionIdPermissionsPermissionId: reply } },
  );
});

test('started twice, it tells and asks everything once', () =>
  inWorld(async ({ application, hook, plugin, input }) => {
    const { event: second } = await plugin({ ...input, directory: '/other' });
    const everybody = async (event) => {
      await hook({ event });
      await second({ event });
    };
    await everybody({ id: 'evt_1', type: 'session.created', properties: { info: { id: session, directory: '/d' } } });
    await everybody({ type: 'permission.asked', properties: asked() });
    await everybody({ id: 'evt_2', type: 'session.idle', properties: { sessionID: 'ses_2' } });
    const events = await application.received(3);
    assert.deepEqual(events.map(({ type }) => type).sort(), ['agentStarted', 'approvalRequired', 'responding']);
  }));

test('without the application nothing happens', async () => {
  fs.rmSync(socketPath, { force: true });
  const { calls, reply } = makeClient({ data: true });
  await inWorld(
    async ({ server, emit }) => {
      await emit(...idle);
      await emit('permission.asked', asked());
      // Both connections fail, which clears their timers.
      await until(() => timers.size === 0, 'the end of both');
      assert.deepEqual([calls, server.requests], [[], []]);
    },
    { absent: true, client: { postSessionIdPermissionsPermissionId: reply } },
  );
});

test('an event is given up after three seconds', () =>
  inWorld(async ({ application, emit }) => {
    // The plug-in has said all; whether it still listens shows when it is written to.
    const listens = ({ socket }) => new Promise((done) => socket.write('?', (error) => done(!error)));
    application.keepOpen = true;
    await emit(...idle);
    await application.received(1);
    elapse(2999);
    await emit(...idle);
    await application.received(2);
    const [first, second] = application.connections;
    assert.equal(await listens(first), true);
    elapse(1);
    while (await listens(first));
    assert.equal(await listens(second), true);
  }));

test('a request is given up after two hours', () =>
  inWorld(async ({ application, server, emit }) => {
    await emit('permission.asked', asked());
    await application.received(1);
    elapse(7199999);
    await emit('session.status', { sessionID: 'ses_2', status: { type: 'idle' } });
    await application.received(2);
    assert.equal(application.connections[0].closed, false);
    elapse(1);
    await until(() => application.connections[0].closed, 'the end of the connection');
    assert.deepEqual(server.requests, []);
  }));
