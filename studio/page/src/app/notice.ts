// Telling somebody who looks elsewhere that a video is ready: a notification where the browser allows it, else the
// title of the page and a short sound.
import type { Job } from '../api/types';
import { keepNotice, wantsNotice } from './preferences';
import { t } from './strings';

export function canNotify(): boolean {
  return isSecureContext && 'Notification' in window;
}

export function noticeState(): NotificationPermission {
  return canNotify() ? (wantsNotice() ? Notification.permission : 'default') : 'denied';
}

export async function askNotice(): Promise<NotificationPermission> {
  const answer = await Notification.requestPermission();
  if (answer === 'granted') keepNotice();
  return answer;
}

/** Two soft notes. Browsers that want a touch first stay silent. */
function chime() {
  try {
    const sound = new AudioContext();
    [660, 880].forEach((frequency, i) => {
      const tone = sound.createOscillator();
      const volume = sound.createGain();
      const begin = sound.currentTime + i * 0.16;
      tone.frequency.value = frequency;
      volume.gain.setValueAtTime(0, begin);
      volume.gain.linearRampToValueAtTime(0.12, begin + 0.02);
      volume.gain.exponentialRampToValueAtTime(0.001, begin + 0.6);
      tone.connect(volume).connect(sound.destination);
      tone.start(begin);
      tone.stop(begin + 0.7);
    });
  } catch {
    // No sound device.
  }
}

export async function tellReady(job: Job): Promise<void> {
  if (!document.hidden) return;
  document.title = `✓ ${t('notice.ready')}`;
  if (!canNotify() || Notification.permission !== 'granted' || !wantsNotice()) return chime();
  const text = { body: job.title || job.template?.title || '', icon: '/icon-192.png', tag: job.id };
  const worker = await navigator.serviceWorker?.getRegistration();
  if (worker) await worker.showNotification(t('notice.ready'), { ...text, data: `/#/video/${job.video}` });
  else new Notification(t('notice.ready'), text);
}
