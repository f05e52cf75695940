// A dialog of the browser's own: it keeps the focus in it, closes on Esc, and gives the focus back.
import type { ComponentChildren } from 'preact';
import { useEffect, useId, useRef } from 'preact/hooks';
import { enterStep } from '../app/steps';
import { t } from '../app/strings';
import { Icon } from './Icon';

interface Properties {
  title: string;
  onClose: () => void;
  /** "sheet" comes up from below on a phone; "full" fills the screen there. */
  shape?: 'sheet' | 'full';
  children: ComponentChildren;
}

export function Dialog({ title, onClose, shape = 'sheet', children }: Properties) {
  const dialog = useRef<HTMLDialogElement>(null);
  const id = useId();
  const close = useRef(onClose);
  close.current = onClose;

  useEffect(() => {
    const element = dialog.current;
    element?.showModal();
    const find = (selector: string) => element?.querySelector<HTMLElement>(selector);
    (find('input[type=text]') ?? find('h2'))?.focus();
    const leave = enterStep(() => close.current());
    return () => {
      leave();
      element?.close();
    };
  }, []);

  return (
    <dialog
      ref={dialog}
      class={`dialog ${shape}`}
      aria-labelledby={id}
      onCancel={(event) => {
        if (event.target !== event.currentTarget) return;
        event.preventDefault();
        onClose();
      }}
      onClick={(event) => event.target === dialog.current && onClose()}
    >
      <div class="dialog-body">
        <header class="dialog-head">
          <h2 id={id} tabIndex={-1}>{title}</h2>
          <button class="round" aria-label={t('word.close')} onClick={onClose}>
            <Icon name="close" />
          </button>
        </header>
        {children}
      </div>
    </dialog>
  );
}
