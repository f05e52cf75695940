// A button that chooses files: a label around the browser's own input, so that it works everywhere, secure or not.
import type { ComponentChildren } from 'preact';

interface Properties {
  accept: string;
  class: string;
  label?: string;
  multiple?: boolean;
  /** Straight to the camera, where there is one. */
  camera?: boolean;
  onFiles: (files: File[]) => void;
  onFocus?: () => void;
  children: ComponentChildren;
}

export function FileButton({ accept, label, multiple, camera, onFiles, onFocus, children, ...rest }: Properties) {
  return (
    <label class={`${rest.class} file`} title={label}>
      <input
        type="file"
        class="over"
        accept={accept}
        multiple={multiple ?? false}
        aria-label={label}
        onFocus={onFocus}
        {...(camera ? { capture: 'environment' } : {})}
        onChange={(event) => {
          const files = [...(event.currentTarget.files ?? [])];
          event.currentTarget.value = '';
          if (files.length > 0) onFiles(files);
        }}
      />
      {children}
    </label>
  );
}

export const photoFiles = 'image/*,.heic,.heif';
export const filmFiles = 'video/*';
export const soundFiles = 'audio/*,video/mp4';
