import { Problem } from '../api/client';

export function problemText(error: unknown): string {
  return error instanceof Problem && error.message ? error.message : String(error);
}
