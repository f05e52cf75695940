// Filling in a template: the live picture on top, below it one card an input, in the template's order.
import { useCallback, useEffect, useMemo, useRef, useState } from 'preact/hooks';
import { get, Problem } from '../api/client';
import type { Crop, Input, Template } from '../api/types';
import { CropDialog } from '../crop/CropDialog';
import { takeCarried } from '../app/carry';
import { go } from '../app/router';
import { duration, language, t } from '../app/strings';
import { makeVideo, studio } from '../app/studio';
import { Icon, type IconName } from '../ui/Icon';
import { Screen } from '../ui/Screen';
import { say, sayProblem } from '../ui/Toasts';
import { apiMusic, apiValues, Draft, exampleOf, previewValues, templateMusic, type Field } from './Draft';
import { DraftVideo } from './DraftVideo';
import { FilmField } from './FilmField';
import { LivePreview } from './LivePreview';
import { addFile, isSending, kindOf, media, pictureOf, refresh, settled } from './media';
import { MissingDialog } from './MissingDialog';
import { musicKey, MusicField } from './MusicField';
import { aspectOf, imagesOf, PhotoSlots } from './PhotoSlots';
import { PreviewPicture } from './PreviewPicture';
import { PreviewSession } from './PreviewSession';
import { excessOf, TextField } from './TextField';
import { useChecks } from './useChecks';

/** Photos that follow each other are one group; everything else stands alone. */
function groups(inputs: Input[]): Input[][] {
  const all: Input[][] = [];
  for (const input of inputs) {
    const last = all.at(-1);
    if (input.kind === 'photo' && last?.[0]?.kind === 'photo') last.push(input);
    else all.push([input]);
  }
  return all;
}

/** The same object as long as it says the same. */
function useSame<T>(value: T): T {
  const key = JSON.stringify(value);
  return useMemo(() => value, [key]);
}

const add = (file: File, kind: 'photo' | 'video' | 'sound') => addFile(file, kind, studio.value.settings?.limits[`${kind}Bytes`]);

function isTyping(target: EventTarget | null): boolean {
  return target instanceof HTMLTextAreaElement || (target instanceof HTMLInputElement && target.type === 'text');
}

export function FillScreen({ id }: { id: number }) {
  const [template, setTemplate] = useState<Template | null>(null);
  const [draft, setDraft] = useState<Draft | null>(null);

  useEffect(() => {
    let isCurrent = true;
    const opened = new Draft(id);
    Promise.all([get<Template>(`/templates/${id}?lang=${language}`), opened.open()]).then(
      ([found]) => {
        if (!isCurrent) return;
        void refresh(opened.items());
        const carried = takeCarried();
        const places = found.inputs.filter((input) => input.kind === 'photo');
        if (carried.length > 0) {
          opened.change('carried', (content) => ({
            ...content,
            fields: {
              ...content.fields,
              ...Object.fromEntries(
                places.slice(0, carried.length).map((place, i) => [place.key, { kind: 'photo', item: carried[i]! }]),
              ),
            },
          }));
        }
        setTemplate(found);
        setDraft(opened);
      },
      (error) => {
        sayProblem(error);
        go('/', { replace: true });
      },
    );
    return () => {
      isCurrent = false;
      opened.close();
    };
  }, [id]);

  if (!template || !draft) {
    return (
      <Screen title={t('fill.title')} back="/" narrow>
        <div class="live waiting" />
      </Screen>
    );
  }
  return <Form template={template} draft={draft} />;
}

function Step({ icon, label, ahead, onClick }: { icon: IconName; label: string; ahead: unknown[]; onClick: () => void }) {
  return (
    <button class="round" aria-label={label} title={label} disabled={ahead.length === 0} onClick={onClick}>
      <Icon name={icon} />
    </button>
  );
}

function Form({ template, draft }: { template: Template; draft: Draft }) {
  const content = draft.state.use((state) => state);
  const items = media.use((value) => value.items);
  const session = useMemo(() => new PreviewSession(template.id, 360), [template.id]);
  const [activeKey, setActiveKey] = useState('');
  const [cropping, setCropping] = useState('');
  const [trial, setTrial] = useState<Crop | null>(null);
  const [missing, setMissing] = useState<{ key: string; label: string }[] | null>(null);
  const [isStarting, setStarting] = useState(false);
  const [draftJob, setDraftJob] = useState(false);
  const [problems, setProblems] = useState<Record<string, string>>({});

  const seen = useMemo(() => {
    const field = content.fields[cropping];
    if (!trial || field?.kind !== 'photo') return content;
    return { ...content, fields: { ...content.fields, [cropping]: { ...field, crop: trial } } };
  }, [content, cropping, trial]);
  const values = useSame(previewValues(seen, template));
  const told = useSame(apiValues(content));
  const music = useSame(apiMusic(content.music));
  const check = useChecks(template.id, told, music);

  // Again, too, when the studio is back.
  const isOffline = studio.use((value) => value.isOffline);
  useEffect(() => session.show(values, null), [session, values, isOffline]);
  useEffect(() => () => session.close(), [session]);

  const activate = useCallback(
    (key: string) => {
      setActiveKey(key);
      const moment = session.shown.value.info?.moments[key];
      if (moment !== undefined) session.show(latest.current.values, moment);
    },
    [session],
  );
  const latest = useRef({ values });
  latest.current = { values };
  // A field that was in focus before the scene was ready.
  const info = session.shown.use((shown) => shown.info);
  useEffect(() => {
    if (activeKey) activate(activeKey);
  }, [info]);

  const photos = template.inputs.filter((input) => input.kind === 'photo');

  const takePhotos = useCallback(
    (files: File[], from: string) => {
      const empty = photos.filter((input) => !draft.state.value.fields[input.key]);
      const begin = photos.findIndex((input) => input.key === from);
      const first = photos[begin];
      // On a slot: that one, then the empty ones behind it; else the empty ones, and when none is, from the beginning.
      const places = first
        ? [first, ...photos.slice(begin + 1).filter((input) => empty.includes(input))]
        : empty.length > 0
          ? empty
          : photos;
      const taken = files.slice(0, places.length);
      const added = taken.map((file, i) => [places[i]!.key, add(file, 'photo')] as const);
      draft.change('photos', (old) => ({
        ...old,
        fields: {
          ...old.fields,
          ...Object.fromEntries(added.map(([key, item]) => [key, { kind: 'photo', item } satisfies Field])),
        },
      }));
      const last = added.at(-1);
      if (last) activate(last[0]);
      if (files.length > taken.length) say(t('photo.tooMany', { n: files.length - taken.length }));
    },
    [photos, draft],
  );

  // Photos from the clipboard, or dropped anywhere on the form.
  useEffect(() => {
    const paste = (event: ClipboardEvent) => {
      const files = imagesOf(event.clipboardData);
      if (files.length === 0 || photos.length === 0) return;
      event.preventDefault();
      takePhotos(files, '');
    };
    const over = (event: DragEvent) => event.preventDefault();
    const drop = (event: DragEvent) => {
      event.preventDefault();
      const files = imagesOf(event.dataTransfer);
      if (files.length > 0 && photos.length > 0) takePhotos(files, '');
    };
    const key = (event: KeyboardEvent) => {
      if (!(event.ctrlKey || event.metaKey) || event.key.toLowerCase() !== 'z' || isTyping(event.target)) return;
      event.preventDefault();
      if (event.shiftKey) draft.redo();
      else draft.undo();
    };
    addEventListener('paste', paste);
    addEventListener('dragover', over);
    addEventListener('drop', drop);
    addEventListener('keydown', key);
    return () => {
      removeEventListener('paste', paste);
      removeEventListener('dragover', over);
      removeEventListener('drop', drop);
      removeEventListener('keydown', key);
    };
  }, [takePhotos]);

  const swap = (from: string, to: string) => {
    const input = (key: string) => template.inputs.find((other) => other.key === key)!;
    const sameShape = Math.abs(aspectOf(input(from)) - aspectOf(input(to))) < 0.001;
    draft.change(`swap ${Date.now()}`, (old) => {
      const fields = { ...old.fields };
      const move = (field: Field | undefined, key: string) => {
        if (!field) delete fields[key];
        else if (field.kind === 'photo' && !sameShape) fields[key] = { kind: 'photo', item: field.item };
        else fields[key] = field;
      };
      move(old.fields[from], to);
      move(old.fields[to], from);
      return { ...old, fields };
    });
    activate(to);
  };

  /** Done when it is drawn: a dialog that closes gives the focus back first. */
  const [jumpTo, setJumpTo] = useState({ key: '' });
  const jump = (key: string) => {
    setMissing(null);
    setJumpTo({ key });
  };
  useEffect(() => {
    const place = jumpTo.key && document.getElementById(`field-${jumpTo.key}`);
    if (!place) return;
    place.scrollIntoView({ block: 'center' });
    place.querySelector<HTMLElement>('input, textarea, button')?.focus({ preventScroll: true });
  }, [jumpTo]);

  /** Of a photo, film or sound that has not arrived. */
  const failedKey = () => {
    const { fields, music } = draft.state.value;
    const hasFailed = (item: string | undefined) => item && media.value.items[item]?.problem;
    const used = Object.entries(fields).find(([, field]) => 'item' in field && hasFailed(field.item));
    return used?.[0] ?? (music.kind === 'own' && hasFailed(music.item) ? musicKey : '');
  };

  const start = async () => {
    setProblems({});
    setStarting(true);
    try {
      await settled(draft.items());
      const failed = failedKey();
      if (failed) return jump(failed);
      const job = await makeVideo({
        template: template.id,
        values: apiValues(draft.state.value),
        music: apiMusic(draft.state.value.music),
        size: null,
      });
      go(`/job/${job.id}`);
    } catch (error) {
      takeProblems(error);
    } finally {
      setStarting(false);
    }
  };

  const takeProblems = (error: unknown) => {
    const errors = error instanceof Problem ? (error.body.errors ?? []) : [];
    const found: Record<string, string> = {};
    for (const { key, pointer, message } of errors) {
      const name = key ?? pointer?.split('/')[2] ?? '';
      if (template.inputs.some((input) => input.key === name)) found[name] = message;
    }
    setProblems(found);
    const [first] = Object.keys(found);
    if (first) jump(first);
    else sayProblem(error);
  };

  /** Nothing missing: it starts. Else one question, with a way to each that is. */
  const make = () => {
    if (isStarting) return;
    const tooLong = template.inputs.find((input) => {
      const field = content.fields[input.key];
      const excess = field?.kind === 'text' ? excessOf(input, field.text) : null;
      return excess && (excess.characters > 0 || excess.lines > 0);
    });
    if (tooLong) return jump(tooLong.key);
    const failed = failedKey();
    if (failed) return jump(failed);
    const open = template.inputs.filter((input) => !content.fields[input.key]).map(({ key, label }) => ({ key, label }));
    if (content.music.kind === 'own' && !content.music.item) open.push({ key: musicKey, label: t('music.choose') });
    if (open.length > 0) setMissing(open);
    else void start();
  };

  const removeField = (key: string) => draft.setField(key, null);
  const croppingInput = template.inputs.find((input) => input.key === cropping);
  const croppingField = content.fields[cropping];
  const croppingItem = croppingField?.kind === 'photo' ? items[croppingField.item] : undefined;
  const sending = draft.items().filter((item) => items[item] && isSending(items[item]!)).length;
  const ownSound = content.music.item ? items[content.music.item]?.local : '';
  const soundAddress =
    content.music.kind === 'own' ? (ownSound ?? '') : content.music.kind === 'template' ? (template.preview ?? '') : '';

  return (
    <Screen
      title={template.title}
      back={`/template/${template.id}`}
      narrow
      tools={
        <>
          <Step icon="undo" label={t('word.undo')} ahead={content.past} onClick={() => draft.undo()} />
          <Step icon="redo" label={t('word.redo')} ahead={content.future} onClick={() => draft.redo()} />
        </>
      }
    >
      <div class="fill">
        <LivePreview
          template={template}
          session={session}
          values={values}
          music={{ address: soundAddress, volume: content.music.volume, start: content.music.kind === 'own' ? content.music.start : 0 }}
          activeKey={activeKey}
          onDraft={() => setDraftJob(true)}
        />
        <form
          class="form"
          aria-label={template.title}
          onSubmit={(event) => {
            event.preventDefault();
            make();
          }}
        >
          {groups(template.inputs).map((group) => {
            const input = group[0]!;
            const field = content.fields[input.key];
            if (input.kind === 'photo') {
              return (
                <PhotoSlots
                  key={input.key}
                  inputs={group}
                  fields={content.fields}
                  problems={problems}
                  onFiles={takePhotos}
                  onCrop={(key) => {
                    activate(key);
                    setCropping(key);
                  }}
                  onSwap={swap}
                  onRemove={removeField}
                  onFocus={activate}
                />
              );
            }
            if (input.kind === 'video') {
              return (
                <FilmField
                  key={input.key}
                  input={input}
                  field={field?.kind === 'video' ? field : undefined}
                  problem={problems[input.key] ?? ''}
                  onFile={(file) => {
                    if (kindOf(file) === 'sound') return say(t('film.notAFilm'), true);
                    draft.setField(input.key, { kind: 'video', item: add(file, 'video'), start: 0, volume: 1 });
                    activate(input.key);
                  }}
                  onChange={(change) => field?.kind === 'video' && draft.setField(input.key, { ...field, ...change })}
                  onRemove={() => removeField(input.key)}
                  onFocus={() => activate(input.key)}
                />
              );
            }
            return (
              <TextField
                key={input.key}
                input={input}
                text={field?.kind === 'text' ? field.text : ''}
                example={exampleOf(template, input)}
                fits={check?.fits[input.key]}
                problem={problems[input.key] ?? ''}
                onChange={(text) => draft.setField(input.key, { kind: 'text', text })}
                onFocus={() => activate(input.key)}
              />
            );
          })}
          <MusicField
            music={content.music}
            hasTemplateMusic={template.music}
            onChange={(changed) => draft.setMusic(changed)}
            onFile={(file) => draft.setMusic({ ...content.music, kind: 'own', item: add(file, 'sound'), start: 0 })}
          />
          {(Object.keys(content.fields).length > 0 || content.music !== templateMusic) && (
            <p class="form-end">
              <span class="hint">{t('fill.kept')}</span>
              <button
                type="button"
                class="quiet compact"
                onClick={() => {
                  draft.startOver();
                  say(t('fill.startedOver'));
                }}
              >
                <Icon name="again" />
                {t('fill.startOver')}
              </button>
            </p>
          )}
          <div class="action-bar">
            <button type="submit" class="primary wide" aria-disabled={isStarting}>
              {isStarting && sending > 0 ? t('fill.waiting', { n: sending }) : t('fill.make')}
            </button>
            <p class="hint" aria-live="polite">
              {check?.place && check.place > 1
                ? t('fill.place', { n: check.place - 1 })
                : check?.seconds
                  ? t('fill.estimate', { time: duration(check.seconds) })
                  : t('fill.free')}
            </p>
          </div>
        </form>
      </div>
      {croppingInput && croppingItem && (
        <CropDialog
          label={croppingInput.label}
          source={pictureOf(croppingItem)}
          aspect={aspectOf(croppingInput)}
          crop={croppingField?.kind === 'photo' ? croppingField.crop : undefined}
          onTry={setTrial}
          onCancel={() => {
            setTrial(null);
            setCropping('');
          }}
          onDone={(crop) => {
            draft.setField(cropping, { kind: 'photo', item: croppingItem.id, crop });
            setTrial(null);
            setCropping('');
          }}
        >
          <PreviewPicture session={session} label={croppingInput.label} />
        </CropDialog>
      )}
      {missing && (
        <MissingDialog
          missing={missing}
          estimate={check?.seconds ?? null}
          place={check?.place ?? null}
          onJump={jump}
          onMake={() => {
            setMissing(null);
            void start();
          }}
          onClose={() => setMissing(null)}
        />
      )}
      {draftJob && (
        <DraftVideo
          template={template}
          values={apiValues(content)}
          music={music}
          onClose={() => setDraftJob(false)}
        />
      )}
    </Screen>
  );
}
