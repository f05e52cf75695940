// How far a job is, and in words what it does.
import type { Job } from '../api/types';
import { duration, t } from '../app/strings';

export function shareOf(job: Job | undefined): number {
  return job && job.total > 0 ? Math.min(1, job.frame / job.total) : 0;
}

export function wordsOf(job: Job | undefined): string {
  if (!job) return t('job.sending');
  if (job.state === 'cancelling') return t('job.cancelling');
  if (job.state === 'queued') {
    return job.place && job.place > 1 ? t('job.place', { n: job.place - 1 }) : t('job.next');
  }
  if (job.kind === 'install') return t('job.installing');
  if (job.kind === 'refresh') return t('job.refreshing');
  if (job.stage === 'mixing' || job.stage === 'publishing') return t('job.finishing');
  if (job.secondsRemaining !== null) return t('job.left', { time: duration(job.secondsRemaining) });
  return t('job.preparing');
}

export function Bar({ job }: { job: Job | undefined }) {
  const share = shareOf(job);
  const isKnown = share > 0;
  return (
    <div class="progress">
      <div
        class={isKnown ? 'bar' : 'bar unknown'}
        role="progressbar"
        aria-label={t('job.progress')}
        aria-valuemin={0}
        aria-valuemax={100}
        {...(isKnown ? { 'aria-valuenow': Math.round(share * 100) } : {})}
      >
        <i style={{ transform: `scaleX(${isKnown ? share : 0.3})` }} />
      </div>
      <p class="progress-words">
        <span>{wordsOf(job)}</span>
        <span class="number">{isKnown ? `${Math.round(share * 100)} %` : ''}</span>
      </p>
    </div>
  );
}
