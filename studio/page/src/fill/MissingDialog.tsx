// Before making: what is not filled in, with a way to each, or on without it.
import { duration, t } from '../app/strings';
import { Dialog } from '../ui/Dialog';
import { Icon } from '../ui/Icon';

interface Properties {
  missing: { key: string; label: string }[];
  estimate: number | null;
  place: number | null;
  onJump: (key: string) => void;
  onMake: () => void;
  onClose: () => void;
}

export function MissingDialog({ missing, estimate, place, onJump, onMake, onClose }: Properties) {
  return (
    <Dialog title={t('missing.title', { n: missing.length })} onClose={onClose}>
      <p>{t('missing.text')}</p>
      <ul class="jumps">
        {missing.map(({ key, label }) => (
          <li key={key}>
            <button class="jump" onClick={() => onJump(key)}>
              <span dir="auto">{label}</span>
              <Icon name="next" />
            </button>
          </li>
        ))}
      </ul>
      <p class="hint">
        {[
          estimate ? t('fill.estimate', { time: duration(estimate) }) : '',
          place && place > 1 ? t('fill.place', { n: place - 1 }) : '',
        ]
          .filter(Boolean)
          .join(' · ')}
      </p>
      <footer class="dialog-foot">
        <button class="plain" onClick={() => missing[0] && onJump(missing[0].key)}>
          {t('missing.fill')}
        </button>
        <button class="primary" onClick={onMake}>
          {t('missing.make')}
        </button>
      </footer>
    </Dialog>
  );
}
