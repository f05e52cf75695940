// Header, the bar of what is being made, the screen, messages.
import { useEffect } from 'preact/hooks';
import { Problem } from './api/client';
import { route } from './app/router';
import { t, type Language } from './app/strings';
import { activeJobs, studio, watchJobs } from './app/studio';
import { tellReady } from './app/notice';
import { FillScreen } from './fill/FillScreen';
import { DoneScreen } from './screens/DoneScreen';
import { MakingScreen } from './screens/MakingScreen';
import { SettingsScreen } from './screens/SettingsScreen';
import { SignInScreen } from './screens/SignInScreen';
import { TemplateScreen } from './screens/TemplateScreen';
import { TemplatesScreen } from './screens/TemplatesScreen';
import { VideosScreen } from './screens/VideosScreen';
import { shareOf, wordsOf } from './ui/Bar';
import { Guard } from './ui/Guard';
import { Icon, type IconName } from './ui/Icon';
import { say, sayProblem, Toasts } from './ui/Toasts';

function Logo() {
  return (
    <a class="logo" href="#/" aria-label={`multiscene, ${t('nav.templates')}`}>
      <svg viewBox="0 0 28 28" width="28" height="28" aria-hidden="true">
        <rect class="far" x="2" y="7" width="10" height="16" rx="3" transform="rotate(-12 7 15)" />
        <rect class="middle" x="16" y="7" width="10" height="16" rx="3" transform="rotate(12 21 15)" />
        <rect class="near" x="8.5" y="4.5" width="11" height="19" rx="3.2" />
      </svg>
      <span>multiscene</span>
    </a>
  );
}

function Navigation({ screen }: { screen: string }) {
  const entries: [string, string, IconName, string[]][] = [
    ['/', t('nav.templates'), 'grid', ['', 'template', 'fill']],
    ['/videos', t('nav.videos'), 'film', ['videos', 'video', 'job']],
    ['/settings', t('nav.settings'), 'gear', ['settings']],
  ];
  return (
    <nav class="nav" aria-label={t('nav.main')}>
      {entries.map(([path, label, icon, screens]) => (
        <a key={path} href={`#${path}`} aria-current={screens.includes(screen) ? 'page' : undefined}>
          <Icon name={icon} />
          <span>{label}</span>
        </a>
      ))}
    </nav>
  );
}

/** A running job is on top of every screen but its own. */
function RunningBar({ screen, id }: { screen: string; id: string }) {
  const jobs = studio.use((value) => value.jobs);
  const running = activeJobs(jobs).filter((job) => job.kind === 'video');
  const [first] = running;
  if (!first || (screen === 'job' && id === first.id)) return null;
  const title = first.title || first.template?.title || t('making.title');
  return (
    <aside class="running" aria-label={t('making.title')}>
      <a href={`#/job/${first.id}`}>
        <i style={{ transform: `scaleX(${shareOf(first)})` }} />
        <span class="running-title" dir="auto">
          {title}
          {running.length > 1 ? ` +${running.length - 1}` : ''}
        </span>
        <span>{wordsOf(first)}</span>
      </a>
    </aside>
  );
}

export function App({ onLanguage }: { onLanguage: (language: Language) => Promise<void> }) {
  const { screen, id } = route.use((value) => value);
  const session = studio.use((value) => value.session);
  const isOffline = studio.use((value) => value.isOffline);

  useEffect(
    () =>
      watchJobs((job, before) => {
        const isHere = route.value.screen === 'job' && route.value.id === job.id;
        if (!before || job.kind === 'draft') return;
        if (job.state === 'failed' && !isHere) sayProblem(new Problem(job.problem ?? { status: 500 }));
        if (job.state !== 'done') return;
        if (job.kind === 'refresh') return say(t('templates.refreshed'));
        if (job.kind === 'install') return say(t('card.installed', { title: job.template?.title ?? '' }));
        void tellReady(job);
        if (!isHere) say(t('notice.ready'));
      }),
    [],
  );

  const screens: Record<string, () => preact.JSX.Element> = {
    '': () => <TemplatesScreen />,
    template: () => <TemplateScreen id={Number(id)} />,
    fill: () => <FillScreen id={Number(id)} />,
    job: () => <MakingScreen id={id} />,
    video: () => <DoneScreen id={id} />,
    videos: () => <VideosScreen />,
    settings: () => <SettingsScreen onLanguage={onLanguage} />,
  };
  const isIn = session || isOffline;
  const show = session === null && !isOffline ? () => <SignInScreen /> : (screens[screen] ?? screens['']!);

  return (
    <>
      <a class="skip" href="#main" onClick={(event) => skip(event)}>
        {t('nav.skip')}
      </a>
      <header class={`top in-${screen || 'templates'}`}>
        <Logo />
        {isIn && <Navigation screen={screen} />}
      </header>
      {isIn && <RunningBar screen={screen} id={id} />}
      <Guard key={`${screen} ${id}`}>{show()}</Guard>
      <Toasts />
    </>
  );
}

/** '#' leads to screens here, so the jump over the header is made by hand. */
function skip(event: Event) {
  event.preventDefault();
  document.querySelector<HTMLElement>('#main h1')?.focus();
}
