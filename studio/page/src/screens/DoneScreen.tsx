// A finished video: it plays, and can be taken along, handed on, and made again.
import { useEffect, useRef, useState } from 'preact/hooks';
import { address, get, post } from '../api/client';
import type { JobRequest, Template, Video } from '../api/types';
import { carryItems } from '../app/carry';
import { keepAskedToRate, wasAskedToRate } from '../app/preferences';
import { go } from '../app/router';
import { language, t } from '../app/strings';
import { changeVideo, findVideo, loadVideos, rate, studio } from '../app/studio';
import { requestedContent } from '../fill/again';
import { Draft } from '../fill/Draft';
import { Dialog } from '../ui/Dialog';
import { Icon } from '../ui/Icon';
import { Line } from '../ui/Line';
import { Screen } from '../ui/Screen';
import { say, sayProblem } from '../ui/Toasts';
import { DeleteDialog } from './DeleteDialog';

const shareableBytes = 80 * 1024 * 1024;

/** The file in hand before the button is pressed: a browser opens its share sheet only at once. */
function useShareable(video: Video | null): File | null {
  const [file, setFile] = useState<File | null>(null);
  useEffect(() => {
    if (!video || !navigator.canShare || video.bytes > shareableBytes) return;
    const name = `${video.title || video.template?.title || 'video'}.mp4`;
    if (!navigator.canShare({ files: [new File([''], name, { type: 'video/mp4' })] })) return;
    const stop = new AbortController();
    fetch(video.file, { signal: stop.signal })
      .then((answer) => (answer.ok ? answer.blob() : Promise.reject(new Error())))
      .then((blob) => setFile(new File([blob], name, { type: 'video/mp4' })))
      .catch(() => {});
    return () => stop.abort();
  }, [video?.id]);
  return file;
}

/** Without a secure context there is no clipboard to write to, but a field's text can be copied. */
async function copy(text: string): Promise<boolean> {
  if (navigator.clipboard) {
    try {
      await navigator.clipboard.writeText(text);
      return true;
    } catch {
      // Tried the other way.
    }
  }
  const field = document.createElement('textarea');
  field.value = text;
  field.className = 'hidden';
  (document.querySelector('dialog[open]') ?? document.body).append(field);
  field.select();
  const done = document.execCommand('copy');
  field.remove();
  return done;
}

async function requested(video: Video) {
  const request = await get<JobRequest>(`/jobs/${video.job}/request`);
  const template = await get<Template>(`/templates/${request.template}?lang=${language}`);
  return { template, ...(await requestedContent(request, template)) };
}

export async function changeAndMakeAgain(video: Video): Promise<void> {
  const { template, content, lost } = await requested(video);
  const draft = new Draft(template.id);
  await draft.open();
  draft.replace(content);
  draft.close();
  if (lost > 0) say(t('done.photosGone', { n: lost }));
  go(`/fill/${template.id}`);
}

async function samePhotos(video: Video): Promise<void> {
  const { template, content } = await requested(video);
  const items = template.inputs.flatMap((input) => {
    const field = content.fields[input.key];
    return field?.kind === 'photo' ? [field.item] : [];
  });
  carryItems(items);
  say(items.length > 0 ? t('done.pickNext', { n: items.length }) : t('done.noPhotos'));
  go('/');
}

export function DoneScreen({ id }: { id: string }) {
  const [video, setVideo] = useState<Video | null>(null);
  const settings = studio.use((value) => value.settings);
  const videos = studio.use((value) => value.videos);
  const [isMuted, setMuted] = useState(true);
  const [dialog, setDialog] = useState<'' | 'qr' | 'delete' | 'rating'>('');
  const player = useRef<HTMLVideoElement>(null);
  const file = useShareable(video);

  useEffect(() => {
    setVideo(null);
    findVideo(id).then(setVideo, (error) => {
      sayProblem(error);
      go('/videos', { replace: true });
    });
    if (!videos) loadVideos().catch(() => {});
  }, [id]);

  // Asked once, when the third video has been looked at for a moment.
  const isThird = settings && !settings.ratingAsked && !wasAskedToRate() && (videos?.length ?? 0) >= 3;
  useEffect(() => {
    if (!isThird) return;
    const timer = setTimeout(() => {
      if (document.querySelector('dialog')) return;
      keepAskedToRate();
      setDialog('rating');
    }, 4000);
    return () => clearTimeout(timer);
  }, [isThird]);

  const copyLink = async (hours: number, said: string) => {
    try {
      const { url } = await post<{ url: string }>(`/videos/${id}/links`, { hours });
      say((await copy(url)) ? said : url);
    } catch (error) {
      sayProblem(error);
    }
  };
  const share = () => file && navigator.share({ files: [file], title: video?.title ?? '' }).catch(() => {});

  // A code that names this machine alone would lead a phone to itself.
  const isReached = settings?.pairing || !/^(127\.|localhost$|\[::1)/.test(location.hostname);
  const title = video?.title || video?.template?.title || t('done.title');
  const ratings = [['love', t('rating.love')], ['fine', t('rating.fine')], ['poor', t('rating.poor')]] as const;
  const again = (work: (video: Video) => Promise<void>) => video && work(video).catch(sayProblem);

  return (
    <Screen title={title} back="/videos" narrow>
      <div class="done">
        <div class="stage" style={{ '--ratio': video ? video.width / video.height : 9 / 16 }}>
          {video && <img class="ambient" src={video.poster} alt="" />}
          <div class="stage-picture">
            {video && (
              <video
                ref={player}
                src={video.file}
                poster={video.poster}
                controls
                autoPlay
                muted={isMuted}
                playsInline
                loop
                aria-label={title}
                onVolumeChange={(event) => !event.currentTarget.muted && setMuted(false)}
              />
            )}
            {video?.hasSound && isMuted && (
              <button
                class="sound-on"
                onClick={() => {
                  setMuted(false);
                  if (player.current) {
                    player.current.muted = false;
                    player.current.currentTime = 0;
                    void player.current.play();
                  }
                }}
              >
                <Icon name="mute" />
                {t('done.sound')}
              </button>
            )}
          </div>
        </div>
        {video && (
          <div class="done-text">
            <div class="stack">
              <a class="primary wide" href={`${video.file}?download=1`} download>
                <Icon name="download" />
                {t('done.download')}
              </a>
            </div>
            <div class="tiles">
              {file && (
                <button class="tile" onClick={share}>
                  <Icon name="share" />
                  {t('done.share')}
                </button>
              )}
              <button class="tile" onClick={() => setDialog('qr')}>
                <Icon name="qr" />
                {t('done.qr')}
              </button>
              <button class="tile" onClick={() => void copyLink(24, t('done.copied'))}>
                <Icon name="link" />
                {t('done.link')}
              </button>
              {settings?.timelineShare && (
                <button class="tile" onClick={() => void copyLink(24 * 30, t('done.timelineCopied'))}>
                  <Icon name="heart" />
                  {t('done.timeline')}
                </button>
              )}
            </div>
            <div class="lines">
              <Line icon="pencil" text={t('done.change')} leads onClick={() => again(changeAndMakeAgain)} />
              <Line icon="photo" text={t('done.samePhotos')} leads onClick={() => again(samePhotos)} />
              <Line
                icon="pin"
                text={t('videos.keep')}
                pressed={video.kept}
                onClick={() => changeVideo(id, { kept: !video.kept }).then(setVideo, sayProblem)}
              />
              <Line icon="trash" text={t('video.delete')} leads onClick={() => setDialog('delete')} />
            </div>
            <p class="hint">{isSecureContext ? t('done.hint') : t('insecure.text')}</p>
          </div>
        )}
      </div>
      {dialog === 'qr' && (
        <Dialog title={t('done.qr')} onClose={() => setDialog('')}>
          {isReached ? (
            <>
              <img class="qr" src={address(`/videos/${id}/qr.svg`)} alt={t('done.qrAlt')} />
              <p>{t('done.qrText')}</p>
            </>
          ) : (
            <p>{t('done.qrAlone')}</p>
          )}
        </Dialog>
      )}
      {dialog === 'delete' && video && (
        <DeleteDialog
          video={video}
          onClose={() => setDialog('')}
          onDeleted={() => go('/videos', { replace: true })}
        />
      )}
      {dialog === 'rating' && (
        <Dialog title={t('rating.title')} onClose={() => setDialog('')}>
          <p>{t('rating.text')}</p>
          <div class="stack">
            {ratings.map(([answer, text]) => (
              <button
                key={answer}
                class="plain wide"
                onClick={() => {
                  rate(answer).then(() => say(t('rating.thanks')), sayProblem);
                  setDialog('');
                }}
              >
                {text}
              </button>
            ))}
          </div>
        </Dialog>
      )}
    </Screen>
  );
}
