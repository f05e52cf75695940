// The frame of a screen: its heading, the way back, what can be done with the whole of it.
import type { ComponentChildren } from 'preact';
import { useEffect, useRef } from 'preact/hooks';
import { t } from '../app/strings';
import { Icon } from './Icon';

interface Properties {
  title: string;
  /** Where the arrow leads; none: a screen of the first level. */
  back?: string;
  /** The heading shares its line with the arrow, to leave room for what matters. */
  narrow?: boolean;
  lead?: string;
  tools?: ComponentChildren;
  children: ComponentChildren;
}

let isFirst = true;

export function Screen({ title, back, narrow, lead, tools, children }: Properties) {
  const heading = useRef<HTMLHeadingElement>(null);

  useEffect(() => {
    document.title = `${title} – multiscene`;
    // A new screen is announced by its heading; the first one is by the browser.
    if (!isFirst) heading.current?.focus({ preventScroll: true });
    isFirst = false;
  }, [title]);

  return (
    <main class={narrow ? 'screen narrow' : 'screen'} id="main">
      <header class="screen-head">
        {back && (
          <a class="round" href={`#${back}`} aria-label={t('word.back')}>
            <Icon name="back" />
          </a>
        )}
        <div class="screen-title">
          <h1 ref={heading} tabIndex={-1} dir="auto">
            {title}
          </h1>
          {lead && <p class="lead">{lead}</p>}
        </div>
        {tools && <div class="screen-tools">{tools}</div>}
      </header>
      {children}
    </main>
  );
}
