// A slider with its name and, in words, where it stands.
interface Properties {
  label: string;
  value: number;
  min?: number;
  max: number;
  step: number;
  words: string;
  /** The words are for screen readers alone. */
  quiet?: boolean;
  onFocus?: (() => void) | undefined;
  onChange: (value: number) => void;
}

export function Slider({ label, words, quiet, onChange, ...rest }: Properties) {
  return (
    <label class="slider">
      <span>{label}</span>
      <input
        type="range"
        min={0}
        {...rest}
        aria-valuetext={words}
        onInput={(event) => onChange(Number(event.currentTarget.value))}
      />
      {!quiet && <output>{words}</output>}
    </label>
  );
}

export const percent = (share: number) => `${Math.round(share * 100)} %`;
