// What was made: to look at, name, keep, change and delete.
import { useEffect, useRef, useState } from 'preact/hooks';
import type { Video } from '../api/types';
import { day, megabytes, seconds, t } from '../app/strings';
import { changeVideo, loadVideos, studio } from '../app/studio';
import { Dialog } from '../ui/Dialog';
import { Icon } from '../ui/Icon';
import { Line } from '../ui/Line';
import { Screen } from '../ui/Screen';
import { sayProblem } from '../ui/Toasts';
import { DeleteDialog } from './DeleteDialog';
import { changeAndMakeAgain } from './DoneScreen';

export function VideosScreen() {
  const videos = studio.use((value) => value.videos);
  const [menu, setMenu] = useState<Video | null>(null);
  const [naming, setNaming] = useState<Video | null>(null);
  const [deleting, setDeleting] = useState<Video | null>(null);

  useEffect(() => void loadVideos().catch(sayProblem), []);

  /** Out of the menu, to what was chosen in it. */
  const leave = (next: () => unknown) => {
    next();
    setMenu(null);
  };
  const nameOf = (video: Video) => video.title || video.template?.title || t('done.title');
  return (
    <Screen title={t('videos.title')}>
      {!videos && <div class="waiting-space" aria-busy="true" />}
      {videos?.length === 0 && (
        <div class="empty">
          <p>{t('videos.none')}</p>
          <a class="primary" href="#/">
            {t('videos.start')}
          </a>
        </div>
      )}
      {videos && videos.length > 0 && (
        <ul class="cards">
          {videos.map((video) => (
            <li key={video.id} class="card">
              <a class="card-link" href={`#/video/${video.id}`}>
                <div class="card-picture">
                  <img src={video.poster} alt="" width={video.width} height={video.height} loading="lazy" decoding="async" />
                  <span class="length">{seconds(video.seconds)}</span>
                  {video.kept && (
                    <span class="mark kept">
                      <Icon name="pin" />
                      {t('video.kept')}
                    </span>
                  )}
                </div>
                <span class="card-title" dir="auto">
                  {nameOf(video)}
                </span>
                <span class="card-facts">{day(video.created)}</span>
              </a>
              <button
                class="round small card-more"
                aria-label={t('videos.more', { title: nameOf(video) })}
                onClick={() => setMenu(video)}
              >
                <Icon name="more" />
              </button>
            </li>
          ))}
        </ul>
      )}
      {menu && (
        <Dialog title={nameOf(menu)} onClose={() => setMenu(null)}>
          <p class="hint">
            {[
              megabytes(menu.bytes / 1e6),
              `${menu.width} × ${menu.height}`,
              menu.expires && !menu.kept ? t('videos.until', { day: day(menu.expires) }) : '',
            ]
              .filter(Boolean)
              .join(' · ')}
          </p>
          <div class="lines">
            <Line icon="text" text={t('videos.rename')} onClick={() => leave(() => setNaming(menu))} />
            <Line
              icon="pin"
              text={menu.kept ? t('videos.unkeep') : t('videos.keep')}
              onClick={() => leave(() => changeVideo(menu.id, { kept: !menu.kept }).catch(sayProblem))}
            />
            <Line
              icon="pencil"
              text={t('done.change')}
              onClick={() => leave(() => changeAndMakeAgain(menu).catch(sayProblem))}
            />
            <a class="jump" href={`${menu.file}?download=1`} download>
              <Icon name="download" />
              <span>{t('done.download')}</span>
            </a>
            <Line icon="trash" text={t('video.delete')} onClick={() => leave(() => setDeleting(menu))} />
          </div>
        </Dialog>
      )}
      {naming && <NameDialog video={naming} onClose={() => setNaming(null)} />}
      {deleting && <DeleteDialog video={deleting} onClose={() => setDeleting(null)} onDeleted={() => {}} />}
    </Screen>
  );
}

function NameDialog({ video, onClose }: { video: Video; onClose: () => void }) {
  const field = useRef<HTMLInputElement>(null);
  return (
    <Dialog title={t('videos.rename')} onClose={onClose}>
      <form
        class="stack"
        onSubmit={(event) => {
          event.preventDefault();
          changeVideo(video.id, { title: field.current?.value.trim() ?? '' }).catch(sayProblem);
          onClose();
        }}
      >
        <label class="field">
          <span class="field-head">{t('videos.name')}</span>
          <input ref={field} type="text" dir="auto" maxLength={120} defaultValue={video.title ?? ''} onFocus={(event) => event.currentTarget.select()} />
        </label>
        <button type="submit" class="primary wide">
          {t('word.save')}
        </button>
      </form>
    </Dialog>
  );
}
