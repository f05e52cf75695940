// A device that is not known yet: the code that the program and the page on that machine show.
import { useState } from 'preact/hooks';
import { Problem } from '../api/client';
import { t } from '../app/strings';
import { signIn } from '../app/studio';
import { Screen } from '../ui/Screen';
import { problemText } from '../ui/Toasts';

const digits = 6;

export function SignInScreen() {
  const [code, setCode] = useState('');
  const [said, setSaid] = useState('');
  const [isBusy, setBusy] = useState(false);

  const enter = async (text: string) => {
    setBusy(true);
    setSaid('');
    try {
      await signIn(text);
    } catch (error) {
      const status = error instanceof Problem ? error.status : 0;
      setSaid(status === 401 || status === 403 || status === 400 ? t('signIn.wrong') : problemText(error));
      setCode('');
    } finally {
      setBusy(false);
    }
  };

  return (
    <Screen title={t('signIn.title')} lead={t('signIn.lead')}>
      <form
        class="sign-in"
        onSubmit={(event) => {
          event.preventDefault();
          void enter(code);
        }}
      >
        <label class="field">
          <span class="field-head">{t('signIn.code')}</span>
          <input
            type="text"
            class="code"
            inputMode="numeric"
            autocomplete="one-time-code"
            pattern="[0-9]*"
            dir="ltr"
            value={code}
            aria-invalid={said !== ''}
            aria-describedby="sign-in-said"
            onInput={(event) => {
              const text = event.currentTarget.value.replace(/\D/g, '').slice(0, digits);
              setCode(text);
              if (text.length === digits && !isBusy) void enter(text);
            }}
          />
        </label>
        <p id="sign-in-said" class={said ? 'said bad' : 'said'} role="alert">
          {said}
        </p>
        <button type="submit" class="primary wide" disabled={code.length < digits || isBusy}>
          {t('signIn.go')}
        </button>
      </form>
      <p class="hint">{t('signIn.hint')}</p>
    </Screen>
  );
}
