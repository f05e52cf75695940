// What "check" says, with places that lead to the node.
import { Icon } from '../ui/Icon';
import { bench, select } from './bench';
import { placeOf } from './live';
import type { Finding, Outline, State } from './types';
import { w } from './words';

function counted(findings: Finding[]): string {
  const errors = findings.filter((one) => one.severity === 'error').length;
  const warnings = findings.length - errors;
  const words = [];
  if (errors > 0) words.push(errors === 1 ? w('error') : w('errors', { n: errors }));
  if (warnings > 0) words.push(warnings === 1 ? w('warning') : w('warnings', { n: warnings }));
  return words.join(', ');
}

function Place({ finding, outline }: { finding: Finding; outline: Outline | null }) {
  const place = outline && finding.file && finding.key ? placeOf(outline, finding.file, finding.key) : null;
  const file = finding.line > 0 ? `${finding.file}:${finding.line}` : finding.file;
  const words = (
    <>
      <code>{file}</code>
      {finding.key && <code class="wb-key">{finding.key}</code>}
    </>
  );
  if (!place) return <p class="wb-place">{words}</p>;
  return (
    <button type="button" class="wb-place" title={w('goTo', { key: place.key || finding.file })} onClick={() => select(place)}>
      {words}
    </button>
  );
}

function Entry({ finding, outline }: { finding: Finding; outline: Outline | null }) {
  return (
    <li class={`wb-finding ${finding.severity}`}>
      <Icon name="warning" />
      <div>
        <p>{finding.message}</p>
        {finding.remedy && <p class="wb-remedy">{finding.remedy}</p>}
        <Place finding={finding} outline={outline} />
      </div>
    </li>
  );
}

/** What keeps the picture from being shown, unless it is among the findings. */
function refusal(state: State): Finding | null {
  const { problem } = state;
  if (!problem) return null;
  const isKnown = state.findings.some((one) => one.severity === 'error' && problem.message.startsWith(one.message));
  return isKnown ? null : { severity: 'error', remedy: '', line: 0, ...problem };
}

export function Findings() {
  const state = bench.use((value) => value.state);
  const outline = bench.use((value) => value.outline);
  const isChecked = state && state.checked === state.revision;
  const findings = state ? [refusal(state), ...state.findings].filter((one) => one !== null) : [];
  findings.sort((a, b) => a.severity.localeCompare(b.severity));
  return (
    <section class="wb-panel wb-findings" aria-labelledby="wb-findings">
      <header>
        <h2 id="wb-findings">{w('findings')}</h2>
        <span class="wb-note" role="status">
          {isChecked || findings.length > 0 ? counted(findings) : w('checking')}
        </span>
      </header>
      <div class="wb-scroll" tabIndex={0} role="group" aria-labelledby="wb-findings">
        {state?.problem && <p class="wb-banner">{state.video ? w('refused') : w('refusedAtAll')}</p>}
        {findings.length > 0 ? (
          <ul class={isChecked ? '' : 'is-old'}>
            {findings.map((finding, index) => (
              <Entry key={index} finding={finding} outline={outline} />
            ))}
          </ul>
        ) : (
          isChecked && (
            <p class="wb-good">
              <Icon name="check" />
              {w('nothingWrong')}
            </p>
          )
        )}
      </div>
    </section>
  );
}
