// One of several things that can be done, in a list of them.
import { Icon, type IconName } from './Icon';

interface Properties {
  icon: IconName;
  text: string;
  /** Leads somewhere else. */
  leads?: boolean;
  pressed?: boolean;
  onClick: () => void;
}

export function Line({ icon, text, leads, pressed, onClick }: Properties) {
  return (
    <button class="jump" aria-pressed={pressed} onClick={onClick}>
      <Icon name={icon} />
      <span>{text}</span>
      {leads && <Icon name="next" />}
    </button>
  );
}
