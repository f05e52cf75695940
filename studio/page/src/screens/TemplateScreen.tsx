// One template, large and moving: what it is, what it needs, and the way in.
import { useEffect, useState } from 'preact/hooks';
import { get } from '../api/client';
import { isActive, type Template } from '../api/types';
import { calm, go } from '../app/router';
import { language, megabytes, seconds, t } from '../app/strings';
import { install, studio } from '../app/studio';
import { Bar } from '../ui/Bar';
import { Icon, type IconName } from '../ui/Icon';
import { Screen } from '../ui/Screen';
import { sayProblem } from '../ui/Toasts';

export function TemplateScreen({ id }: { id: number }) {
  const card = studio.use((value) => value.templates?.find((other) => other.id === id));
  const job = studio.use((value) =>
    Object.values(value.jobs).find((other) => other.kind === 'install' && other.template?.id === id && isActive(other)),
  );
  const [template, setTemplate] = useState<Template | null>(null);
  const [isMuted, setMuted] = useState(true);
  const [moves, setMoves] = useState(!calm());
  /** The studio may have to make the preview first; until then the picture stands for it. */
  const [isThere, setThere] = useState(false);
  const state = card?.state;

  useEffect(() => {
    if (!state || state === 'offered') return;
    get<Template>(`/templates/${id}?lang=${language}`).then(setTemplate, sayProblem);
  }, [id, state]);

  if (!card) return <Screen title={t('templates.title')} back="/" narrow>{null}</Screen>;

  const texts = template?.inputs.filter((input) => input.kind === 'text').length ?? 0;
  const needs: [IconName, string][] = [];
  if (texts > 0) needs.push(['text', t('card.texts', { n: texts })]);
  if (card.photos > 0) needs.push(['photo', t('card.photos', { n: card.photos })]);
  if (card.videos > 0) needs.push(['film', t('card.videos', { n: card.videos })]);
  if (template?.music) needs.push(['music', t('card.music')]);

  return (
    <Screen title={card.title} back="/" narrow>
      <div class="template">
        <div class="stage" style={{ '--ratio': card.width / card.height }}>
          {card.thumbnail && <img class="ambient" src={card.thumbnail} alt="" />}
          <div class="stage-picture">
            {card.thumbnail && <img src={card.thumbnail} alt="" width={card.width} height={card.height} />}
            {card.preview && moves && (
              <video
                src={card.preview}
                muted={isMuted}
                autoPlay
                loop
                playsInline
                aria-label={t('template.preview', { title: card.title })}
                onPlaying={() => setThere(true)}
                onError={() => setMoves(false)}
                class={isThere ? '' : 'unseen'}
              />
            )}
            {card.preview && moves && !isThere && <span class="live-busy" />}
            {card.preview && (isThere || !moves) && (
              <button
                class="round on-picture"
                aria-label={moves ? (isMuted ? t('sound.on') : t('sound.off')) : t('preview.play')}
                onClick={() => (moves ? setMuted(!isMuted) : setMoves(true))}
              >
                <Icon name={moves ? (isMuted ? 'mute' : 'music') : 'play'} />
              </button>
            )}
          </div>
        </div>
        <div class="template-text">
          <p class="lead">{t('template.lead', { time: seconds(card.seconds) })}</p>
          <ul class="needs">
            {needs.map(([icon, text]) => (
              <li key={icon}>
                <Icon name={icon} />
                {text}
              </li>
            ))}
          </ul>
          {card.needsNewerVersion && (
            <p class="notice">
              <Icon name="warning" />
              {t('template.needsNewer')}
            </p>
          )}
          {card.newerOffered && card.state === 'installed' && !job && (
            <button class="quiet" onClick={() => install(id).catch(sayProblem)}>
              <Icon name="download" />
              {t('template.update')}
            </button>
          )}
          {job && <Bar job={job} />}
          <div class="action-bar">
            {card.state === 'offered' ? (
              <button
                class="primary wide"
                disabled={card.needsNewerVersion || job !== undefined}
                onClick={() => install(id).catch(sayProblem)}
              >
                <Icon name="download" />
                {t('template.install', { size: megabytes(card.megabytes) })}
              </button>
            ) : (
              <button class="primary wide" onClick={() => go(`/fill/${id}`)}>
                {t('template.use')}
              </button>
            )}
          </div>
        </div>
      </div>
    </Screen>
  );
}
