// What a fault in a screen leaves instead of it: one line, and a way to begin anew. The other screens go on.
import { Component, type ComponentChildren } from 'preact';
import { t } from '../app/strings';

export class Guard extends Component<{ children: ComponentChildren }, { hasFailed?: boolean }> {
  componentDidCatch(error: unknown) {
    console.error(error);
    this.setState({ hasFailed: true });
  }

  render() {
    if (!this.state.hasFailed) return this.props.children;
    return (
      <main class="empty" id="main">
        <h1 tabIndex={-1}>{t('problem.unknown')}</h1>
        <button class="primary" onClick={() => location.reload()}>
          {t('word.reload')}
        </button>
      </main>
    );
  }
}
