// Language, looks, who may look in, and forgetting everything.
import { useEffect, useState } from 'preact/hooks';
import { get, remove } from '../api/client';
import type { Device } from '../api/types';
import { forgetDatabase } from '../app/database';
import { chosenTheme, forgetPreferences, keepLanguage, setTheme, type Theme } from '../app/preferences';
import { day, isLanguage, language, languages, t, type Language } from '../app/strings';
import { allVideos, deleteVideo, loadSettings, shareUsage, signOut, studio } from '../app/studio';
import { forgetMedia } from '../fill/media';
import { Dialog } from '../ui/Dialog';
import { Icon } from '../ui/Icon';
import { Screen } from '../ui/Screen';
import { sayProblem } from '../ui/Toasts';

interface Choice<T extends string> {
  name: string;
  legend: string;
  value: T;
  options: [T, string][];
  onChange: (value: T) => void;
}

function Choices<T extends string>({ name, legend, value, options, onChange }: Choice<T>) {
  return (
    <fieldset class="panel">
      <legend>
        <h2>{legend}</h2>
      </legend>
      <div class="segments">
        {options.map(([option, label]) => (
          <label key={option} class="segment">
            <input type="radio" name={name} checked={option === value} onChange={() => onChange(option)} />
            <span lang={isLanguage(option) ? option : undefined}>{label}</span>
          </label>
        ))}
      </div>
    </fieldset>
  );
}

async function forgetEverything(): Promise<void> {
  for (const video of await allVideos()) await deleteVideo(video.id, true);
  forgetMedia();
  await forgetDatabase();
  forgetPreferences();
  if ('caches' in window) for (const name of await caches.keys()) await caches.delete(name);
  location.assign('/');
  location.reload();
}

export function SettingsScreen({ onLanguage }: { onLanguage: (language: Language) => Promise<void> }) {
  const settings = studio.use((value) => value.settings);
  const session = studio.use((value) => value.session);
  const [theme, showTheme] = useState<Theme>(chosenTheme());
  const [devices, setDevices] = useState<Device[] | null>(null);
  const [asks, setAsks] = useState(false);

  // The pairing code is another one once it was used.
  useEffect(() => {
    const look = () => void loadSettings().catch(() => {});
    look();
    const timer = setInterval(look, 5000);
    return () => clearInterval(timer);
  }, []);
  useEffect(() => {
    if (settings?.isLocal) get<{ sessions: Device[] }>('/sessions').then(({ sessions }) => setDevices(sessions), () => {});
  }, [settings?.isLocal, settings?.pairing?.code]);

  return (
    <Screen title={t('settings.title')}>
      <div class="panels">
        <Choices
          name="language"
          legend={t('settings.language')}
          value={language}
          options={Object.entries(languages) as [Language, string][]}
          onChange={(chosen) => {
            keepLanguage(chosen);
            onLanguage(chosen).catch(sayProblem);
          }}
        />
        <Choices
          name="theme"
          legend={t('settings.theme')}
          value={theme}
          options={[
            ['auto', t('settings.auto')],
            ['light', t('settings.light')],
            ['dark', t('settings.dark')],
          ]}
          onChange={(chosen) => {
            setTheme(chosen);
            showTheme(chosen);
          }}
        />
        {settings?.pairing && (
          <section class="panel">
            <h2>{t('settings.pair')}</h2>
            <div class="pairing">
              <img class="qr" src={settings.pairing.qr} alt={t('settings.pairQr')} />
              <div>
                <p>{t('settings.pairText')}</p>
                <p class="code" aria-label={settings.pairing.code.split('').join(' ')}>
                  {settings.pairing.code.replace(/(...)(...)/, '$1 $2')}
                </p>
                <p class="hint url">{settings.pairing.url}</p>
              </div>
            </div>
          </section>
        )}
        {devices && devices.length > 1 && (
          <section class="panel">
            <h2>{t('settings.devices')}</h2>
            <ul class="devices">
              {devices.map((device) => (
                <li key={device.id}>
                  <Icon name="phone" />
                  <span>
                    {device.isCurrent ? t('settings.thisDevice') : device.name || t('settings.device')}
                    <small class="hint">{day(device.seen)}</small>
                  </span>
                  {!device.isCurrent && (
                    <button
                      class="quiet compact"
                      onClick={() =>
                        remove(`/sessions/${device.id}`).then(
                          () => setDevices(devices.filter((other) => other !== device)),
                          sayProblem,
                        )
                      }
                    >
                      {t('word.remove')}
                    </button>
                  )}
                </li>
              ))}
            </ul>
          </section>
        )}
        {settings && (
          <section class="panel">
            <h2>{t('settings.usage')}</h2>
            <label class="check">
              <input
                type="checkbox"
                checked={settings.usageSharing}
                onChange={(event) => shareUsage(event.currentTarget.checked).catch(sayProblem)}
              />
              <span>{t('settings.usageText')}</span>
            </label>
          </section>
        )}
        <section class="panel">
          <h2>{t('settings.yours')}</h2>
          <p class="hint">{t('settings.yoursText')}</p>
          <div class="row">
            <button class="plain danger" onClick={() => setAsks(true)}>
              {t('settings.forget')}
            </button>
            {session?.kind === 'paired' && (
              <button class="plain" onClick={() => signOut().catch(sayProblem)}>
                {t('settings.signOut')}
              </button>
            )}
          </div>
        </section>
        {!isSecureContext && <p class="notice">{t('insecure.text')}</p>}
        {settings && (
          <p class="hint">
            multiscene {settings.version} · {{ full: t('fence.full'), partial: t('fence.partial'), none: t('fence.none') }[settings.fence]}
          </p>
        )}
      </div>
      {asks && (
        <Dialog title={t('settings.forget')} onClose={() => setAsks(false)}>
          <p>{t('settings.forgetText')}</p>
          <footer class="dialog-foot">
            <button class="plain" onClick={() => setAsks(false)}>
              {t('word.cancel')}
            </button>
            <button class="primary danger" onClick={() => forgetEverything().catch(sayProblem)}>
              {t('settings.forgetNow')}
            </button>
          </footer>
        </Dialog>
      )}
    </Screen>
  );
}
