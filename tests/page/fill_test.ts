// What lies behind the form: counting, the way back, and asking for pictures one at a time.
import assert from 'node:assert/strict';
import { setTimeout as wait } from 'node:timers/promises';
import test from 'node:test';

// A page's surroundings, as far as these parts touch them.
Object.assign(globalThis, {
  addEventListener: () => {},
  removeEventListener: () => {},
  createImageBitmap: async (blob: Blob) => ({ name: await blob.text(), close() {} }),
});

const { countCharacters } = await import('../../studio/page/src/fill/graphemes');
const { Draft } = await import('../../studio/page/src/fill/Draft');
const { PreviewSession } = await import('../../studio/page/src/fill/PreviewSession');

test('characters are what a reader counts', () => {
  const cases: [string, number][] = [
    ['', 0],
    ['Grüße', 5],
    ['Gru\u0308ße', 5],
    ['👨‍👩‍👧‍👦 👍🏽', 3],
    ['🇩🇪🇯🇵', 2],
    ['นี้', 1],
    ['שָׁלוֹם', 4],
    ['two\nlines', 8],
    ['two\r\nlines', 8],
  ];
  for (const [text, count] of cases) assert.equal(countCharacters(text), count, JSON.stringify(text));
});

test('letters of one word are one step back, and a step back can be taken back', async () => {
  const draft = new Draft(1100);
  const text = () => {
    const field = draft.state.value.fields.title;
    return field?.kind === 'text' ? field.text : '';
  };
  for (const typed of ['H', 'He', 'Hey']) draft.setField('title', { kind: 'text', text: typed });
  draft.setField('photo', { kind: 'photo', item: 'a' });
  draft.setField('title', { kind: 'text', text: 'Hey you' });
  draft.undo();
  assert.equal(text(), 'Hey');
  draft.undo();
  assert.deepEqual(draft.items(), []);
  draft.undo();
  assert.equal(text(), '');
  draft.undo();
  draft.redo();
  draft.redo();
  assert.equal(text(), 'Hey');
  assert.deepEqual(draft.items(), ['a']);
  draft.startOver();
  assert.deepEqual(draft.state.value.fields, {});
  draft.undo();
  assert.equal(text(), 'Hey');
});

test('one picture is asked for at a time, and of what was wanted meanwhile only the newest', async () => {
  const asked: string[] = [];
  const answers: (() => void)[] = [];
  let refusals: [string, number][] = [];
  let opened = 0;
  globalThis.fetch = (async (address: string, request: RequestInit) => {
    if (request.method === 'DELETE') return new Response(null, { status: 204 });
    if (address.endsWith('/previews')) {
      opened += 1;
      return Response.json({ id: `prv_${opened}`, frames: 100, framesPerSecond: 30, width: 9, height: 16, moments: { title: 40 } });
    }
    const { values, frame } = JSON.parse(request.body as string);
    asked.push(`${address.split('/').at(-2)} ${values.title} ${frame}`);
    const refusal = refusals.shift();
    if (refusal) return Response.json({ code: refusal[0] }, { status: refusal[1] });
    await new Promise<void>((resolve) => answers.push(resolve));
    return new Response(values.title);
  }) as typeof fetch;
  const answer = async () => {
    answers.shift()?.();
    await wait(5);
  };

  const session = new PreviewSession(1100, 360);
  session.show({ title: 'a' }, null);
  await wait(5);
  for (const title of ['b', 'c', 'd']) session.show({ title }, null);
  session.show({ title: 'e' }, 77);
  await wait(5);
  assert.deepEqual(asked, ['prv_1 a 40'], 'the first input\'s moment, and nothing else yet');
  await answer();
  assert.deepEqual(asked.slice(1), ['prv_1 e 77']);
  await answer();
  assert.equal((session.shown.value.picture as unknown as { name: string }).name, 'e');
  assert.equal(session.shown.value.isWaiting, false);

  // A scene that has gone is opened again, at the frame that was wanted; also after the studio has begun anew.
  refusals = [['preview-gone', 404]];
  session.show({ title: 'f' }, null);
  await wait(5);
  await answer();
  assert.deepEqual(asked.slice(2), ['prv_1 f 77', 'prv_2 f 77']);
  assert.equal((session.shown.value.picture as unknown as { name: string }).name, 'f');
  session.show({ title: 'g' }, 12);
  await wait(5);
  await answer();
  assert.equal(asked.at(-1), 'prv_2 g 12');
  refusals = [['not-serving', 503], ['not-serving', 503], ['preview-gone', 404]];
  session.show({ title: 'h' }, null);
  await wait(2200);
  await answer();
  assert.equal((session.shown.value.picture as unknown as { name: string }).name, 'h');
  session.close();
});
