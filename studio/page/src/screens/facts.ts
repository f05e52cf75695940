// What a card says of its template below the title.
import type { Card } from '../api/types';
import { seconds, t } from '../app/strings';

export function needsOf(card: Card): string {
  const photos = card.photos > 0 ? t('card.photos', { n: card.photos }) : '';
  const videos = card.videos > 0 ? t('card.videos', { n: card.videos }) : '';
  return [photos, videos].filter(Boolean).join(' · ') || t('card.textOnly');
}

export function factsOf(card: Card): string {
  return `${seconds(card.seconds)} · ${needsOf(card)}`;
}
