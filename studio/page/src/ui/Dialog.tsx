// A dialog of the browser's own: it keeps the focus in it, closes on Esc, and gives the focus back.
import type { ComponentChildren } from 'preact';
import { useEffect, useId, useRef } from 'preact/hooks';
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
    // The phone's Back button closes the dialog instead of leaving the screen.
    history.pushState({ dialog: id }, '');
    const back = () => close.current();
    addEventListener('popstate', back);
    return () => {
      removeEventListener('popstate', back);
      if ((history.state as { dialog?: string } | null)?.dialog === id) history.back();
      element?.close();
    };
  }, [id]);

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
          <h2 id={id} tabIndex={-1} autofocus>{title}</h2>
          <button type="button" class="round" aria-label={t('close')} onClick={onClose}>
            <Icon name="close" />
          </button>
        </header>
        {children}
      </div>
    </dialog>
  );
}
