// Progress as a ring; without a share it turns.
export function Ring({ share, label }: { share: number | null; label: string }) {
  const round = 2 * Math.PI * 15;
  return (
    <svg
      class={share === null ? 'ring turning' : 'ring'}
      viewBox="0 0 36 36"
      role="progressbar"
      aria-label={label}
      aria-valuemin={0}
      aria-valuemax={100}
      {...(share === null ? {} : { 'aria-valuenow': Math.round(share * 100) })}
    >
      <circle cx="18" cy="18" r="15" />
      <circle
        class="done"
        cx="18"
        cy="18"
        r="15"
        stroke-dasharray={round}
        stroke-dashoffset={round * (1 - (share ?? 0.25))}
      />
    </svg>
  );
}
