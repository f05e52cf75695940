// The first screen: every template as a moving card, what is here and what the server offers.
import { useMemo, useRef, useState } from 'preact/hooks';
import { isActive, type Card, type Job } from '../api/types';
import { calm } from '../app/router';
import { megabytes, t, type Key } from '../app/strings';
import { install, loadTemplates, lookForNew, studio } from '../app/studio';
import { shareOf } from '../ui/Bar';
import { Icon } from '../ui/Icon';
import { Ring } from '../ui/Ring';
import { Screen } from '../ui/Screen';
import { sayProblem } from '../ui/Toasts';
import { factsOf } from './facts';

const filters: Record<string, { label: Key; holds: (card: Card) => boolean }> = {
  new: { label: 'filter.new', holds: (card) => card.isNew },
  here: { label: 'filter.here', holds: (card) => card.state !== 'offered' },
  offered: { label: 'filter.offered', holds: (card) => card.state === 'offered' },
  short: { label: 'filter.short', holds: (card) => card.seconds <= 6.5 },
  words: { label: 'filter.words', holds: (card) => card.photos + card.videos === 0 },
  onePhoto: { label: 'filter.onePhoto', holds: (card) => card.photos === 1 },
  photos: { label: 'filter.photos', holds: (card) => card.photos > 1 },
  film: { label: 'filter.film', holds: (card) => card.videos > 0 },
};

function installJob(jobs: Readonly<Record<string, Job>>, id: number): Job | undefined {
  return Object.values(jobs).find((job) => job.kind === 'install' && job.template?.id === id && isActive(job));
}

export function TemplatesScreen() {
  const templates = studio.use((value) => value.templates);
  const isOffline = studio.use((value) => value.isOffline);
  const [search, setSearch] = useState('');
  const [chosen, setChosen] = useState<readonly string[]>([]);

  // A filter that holds for all or none tells nothing.
  const useful = useMemo(
    () =>
      Object.entries(filters).filter(([, filter]) => {
        const count = templates?.filter(filter.holds).length ?? 0;
        return count > 0 && count < (templates?.length ?? 0);
      }),
    [templates],
  );
  const shown = useMemo(() => {
    const words = search.toLocaleLowerCase().split(/\s+/).filter(Boolean);
    return (templates ?? []).filter((card) => {
      const text = `${card.title} ${card.name}`.toLocaleLowerCase();
      return words.every((word) => text.includes(word)) && chosen.every((name) => filters[name]?.holds(card));
    });
  }, [templates, search, chosen]);

  const toggle = (name: string) =>
    setChosen(chosen.includes(name) ? chosen.filter((other) => other !== name) : [...chosen, name]);

  return (
    <Screen title={t('templates.title')} lead={t('templates.lead')}>
      <div class="finder">
        <label class="search">
          <span class="hidden">{t('templates.search')}</span>
          <Icon name="search" />
          <input
            type="search"
            dir="auto"
            placeholder={t('templates.search')}
            value={search}
            onInput={(event) => setSearch(event.currentTarget.value)}
          />
        </label>
        <div class="chips" role="group" aria-label={t('templates.filters')}>
          {useful.map(([name, filter]) => (
            <button
              key={name}
              type="button"
              class="chip"
              aria-pressed={chosen.includes(name)}
              onClick={() => toggle(name)}
            >
              {t(filter.label)}
            </button>
          ))}
        </div>
      </div>
      {isOffline && (
        <p class="notice" role="status">
          <Icon name="warning" />
          {t('offline.text')}
        </p>
      )}
      <p class="hidden" role="status">
        {templates ? t('templates.count', { n: shown.length }) : ''}
      </p>
      {!templates && !isOffline && (
        <ul class="cards" aria-busy="true">
          {Array.from({ length: 8 }, (_, i) => (
            <li key={i} class="card waiting">
              <div class="card-picture" />
              <span class="card-title">&nbsp;</span>
              <span class="card-facts">&nbsp;</span>
            </li>
          ))}
        </ul>
      )}
      {templates && shown.length === 0 && (
        <div class="empty">
          <p>{templates.length === 0 ? t('templates.none') : t('templates.noMatch')}</p>
          {templates.length > 0 ? (
            <button
              class="plain"
              onClick={() => {
                setSearch('');
                setChosen([]);
              }}
            >
              {t('templates.showAll')}
            </button>
          ) : (
            <button class="plain" onClick={() => loadTemplates().catch(sayProblem)}>
              {t('word.again')}
            </button>
          )}
        </div>
      )}
      {shown.length > 0 && (
        <ul class="cards">
          {shown.map((card, i) => (
            <TemplateCard key={card.id} card={card} isFirst={i < 4} />
          ))}
        </ul>
      )}
      {templates && !isOffline && (
        <p class="below">
          <button class="text" onClick={() => lookForNew().catch(sayProblem)}>
            <Icon name="again" />
            {t('templates.refresh')}
          </button>
        </p>
      )}
    </Screen>
  );
}

const hovers = matchMedia('(hover: hover) and (pointer: fine)').matches;

function TemplateCard({ card, isFirst }: { card: Card; isFirst: boolean }) {
  const job = studio.use((value) => installJob(value.jobs, card.id));
  const [moves, setMoves] = useState(false);
  const timer = useRef(0);
  const canMove = hovers && !calm() && card.preview;

  return (
    <li class="card">
      <a
        href={`#/template/${card.id}`}
        class="card-link"
        onMouseEnter={() => canMove && (timer.current = setTimeout(() => setMoves(true), 250) as unknown as number)}
        onMouseLeave={() => {
          clearTimeout(timer.current);
          setMoves(false);
        }}
        onClick={(event) => {
          const picture = event.currentTarget.querySelector<HTMLElement>('.card-picture');
          if (picture) picture.style.setProperty('view-transition-name', 'picture');
        }}
      >
        <div class="card-picture">
          {card.thumbnail && (
            <img src={card.thumbnail} alt="" width={card.width} height={card.height} loading={isFirst ? 'eager' : 'lazy'} decoding="async" />
          )}
          {moves && card.preview && <video src={card.preview} muted autoPlay loop playsInline aria-hidden="true" />}
          {card.isNew && <span class="mark">{t('card.new')}</span>}
        </div>
        <span class="card-title" dir="auto">
          {card.title}
        </span>
        <span class="card-facts">{factsOf(card)}</span>
      </a>
      {card.state === 'offered' && (
        <span class="card-install">
          {job ? (
            <Ring share={job.total > 0 ? shareOf(job) : null} label={t('job.installing')} />
          ) : (
            <button
              class="round on-picture"
              aria-label={t('card.install', { title: card.title, size: megabytes(card.megabytes) })}
              disabled={card.needsNewerVersion}
              onClick={() => install(card.id).catch(sayProblem)}
            >
              <Icon name="download" />
            </button>
          )}
        </span>
      )}
    </li>
  );
}
