// The phone's Back button closes a dialog instead of leaving the screen: while any is open there is one step more in the
// history. Going back is done by the browser a little later, when another dialog or screen may be there already.
const open: (() => void)[] = [];
let isLeaving = false;
const isDialogState = () => (history.state as { isDialog?: boolean } | null)?.isDialog === true;
const stepIn = () => history.pushState({ isDialog: true }, '');

addEventListener('popstate', () => {
  const wasOurs = isLeaving;
  isLeaving = false;
  if (isDialogState()) return;
  if (!wasOurs) open.at(-1)?.();
  else if (open.length > 0) stepIn();
});

/** A dialog opens; `onBack` is to close it. Returns what tells that it has closed. */
export function enterStep(onBack: () => void): () => void {
  open.push(onBack);
  if (!isDialogState()) stepIn();
  return () => {
    open.splice(open.indexOf(onBack), 1);
    setTimeout(() => {
      if (open.length > 0 || isLeaving || !isDialogState()) return;
      isLeaving = true;
      history.back();
    }, 0);
  };
}

/** At once, or when the browser has gone back from a dialog that has closed. */
export function whenSettled(work: () => void) {
  if (isLeaving) addEventListener('popstate', work, { once: true });
  else work();
}
