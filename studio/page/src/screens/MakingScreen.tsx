// A video in the making: the frame that is being drawn, how long it takes, the way out.
import { useEffect, useState } from 'preact/hooks';
import { Problem, send } from '../api/client';
import { isActive } from '../api/types';
import { go } from '../app/router';
import { t } from '../app/strings';
import { cancelJob, loadJob, studio } from '../app/studio';
import { askNotice, canNotify, noticeState } from '../app/notice';
import { Bar } from '../ui/Bar';
import { Icon } from '../ui/Icon';
import { Screen } from '../ui/Screen';
import { sayProblem } from '../ui/Toasts';

const pictureEvery = 1000;

/** The newest picture that has arrived whole; the one before stays until then. */
function useFramePicture(id: string, isDrawing: boolean): string {
  const [shown, setShown] = useState('');
  useEffect(() => {
    if (!isDrawing) return;
    let isCurrent = true;
    let last = '';
    const ask = async () => {
      // Fetched, since an image of the same address would be the one that the browser has.
      const answer = await send('GET', `/jobs/${id}/picture.jpg`).catch(() => null);
      if (!answer || !isCurrent) return;
      const next = URL.createObjectURL(await answer.blob());
      setShown(next);
      setTimeout(URL.revokeObjectURL, pictureEvery, last);
      last = next;
    };
    void ask();
    const timer = setInterval(() => void ask(), pictureEvery);
    return () => {
      isCurrent = false;
      clearInterval(timer);
      setTimeout(URL.revokeObjectURL, pictureEvery, last);
    };
  }, [id, isDrawing]);
  return shown;
}

export function MakingScreen({ id }: { id: string }) {
  const job = studio.use((value) => value.jobs[id]);
  const card = studio.use((value) => value.templates?.find((other) => other.id === job?.template?.id));
  const picture = useFramePicture(id, job?.state === 'running' && job.frame > 0);
  const [notice, setNotice] = useState(noticeState());

  useEffect(() => {
    loadJob(id).catch((error) => {
      sayProblem(error);
      go('/', { replace: true });
    });
  }, [id]);

  useEffect(() => {
    if (job?.state === 'done') go(job.video ? `/video/${job.video}` : '/videos', { replace: true });
    if (job?.state === 'cancelled') go(job.template ? `/fill/${job.template.id}` : '/', { replace: true });
  }, [job?.state]);

  const hasFailed = job?.state === 'failed' || job?.state === 'expired';
  const title = hasFailed ? t('making.failed') : t('making.title');
  const ratio = card ? card.width / card.height : 9 / 16;

  return (
    <Screen title={title} back="/" narrow>
      <div class="making">
        <div class="stage" style={{ '--ratio': ratio }}>
          {card?.thumbnail && <img class="ambient" src={card.thumbnail} alt="" />}
          <div class={hasFailed ? 'stage-picture dim' : 'stage-picture'}>
            {card?.thumbnail && <img src={card.thumbnail} alt="" class={picture ? '' : 'soft'} />}
            {picture && <img src={picture} alt={t('making.picture')} />}
          </div>
        </div>
        <div class="making-text">
          {hasFailed ? (
            <>
              <p class="notice" role="alert">
                <Icon name="warning" />
                <span>{new Problem(job.problem ?? { status: 500 }).message || t('problem.server')}</span>
              </p>
              {job.problem?.errors?.map((error, i) => error.remedy && <p key={i}>{error.remedy}</p>)}
              <div class="stack">
                {job.template && (
                  <button class="primary wide" onClick={() => go(`/fill/${job.template!.id}`)}>
                    {t('making.change')}
                  </button>
                )}
              </div>
            </>
          ) : (
            <>
              <p class="lead" dir="auto">
                {job?.title || job?.template?.title || ''}
              </p>
              <Bar job={job} />
              <div class="stack">
                {canNotify() && notice === 'default' && (
                  <button class="quiet" onClick={() => void askNotice().then(setNotice)}>
                    <Icon name="bell" />
                    {t('making.notify')}
                  </button>
                )}
                <a class="plain wide" href="#/">
                  {t('making.else')}
                </a>
                <button
                  class="text wide"
                  disabled={!job || !isActive(job) || job.state === 'cancelling'}
                  onClick={() => cancelJob(id).catch(sayProblem)}
                >
                  {t('word.cancel')}
                </button>
              </div>
              <p class="hint">{t('making.hint')}</p>
            </>
          )}
        </div>
      </div>
    </Screen>
  );
}
