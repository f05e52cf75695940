// Requests to the studio: one place that adds the token, and turns what is no success into a Problem.
import type { ProblemBody } from './types';

const base = '/api/v1';

/** An answer that says what is wrong, or none at all (status 0: no connection). */
export class Problem extends Error {
  readonly body: ProblemBody;
  constructor(body: ProblemBody) {
    super(body.detail || body.errors?.[0]?.message || body.title || '');
    this.body = body;
  }
  get status() {
    return this.body.status;
  }
  get code() {
    return this.body.code ?? '';
  }
}

let token = '';
let whenSignedOut = () => {};

export function setToken(value: string) {
  token = value;
}

export function onSignedOut(callback: () => void) {
  whenSignedOut = callback;
}

export function address(path: string): string {
  return path.startsWith('/') && !path.startsWith(base) ? base + path : path;
}

/** Headers that a request which changes something has to carry. */
export function changeHeaders(): Record<string, string> {
  return token ? { 'X-Studio-Token': token } : {};
}

export function problemOf(status: number, text: string): Problem {
  try {
    const body = JSON.parse(text) as Partial<ProblemBody>;
    return new Problem({ ...body, status });
  } catch {
    return new Problem({ status });
  }
}

export async function send(
  method: string,
  path: string,
  body?: unknown,
  options: { signal?: AbortSignal; headers?: Record<string, string> } = {},
): Promise<Response> {
  const headers: Record<string, string> = { ...options.headers };
  if (method !== 'GET') Object.assign(headers, changeHeaders());
  if (body !== undefined) headers['Content-Type'] = 'application/json';
  let answer: Response;
  try {
    answer = await fetch(address(path), {
      method,
      headers,
      body: body === undefined ? null : JSON.stringify(body),
      signal: options.signal ?? null,
      credentials: 'same-origin',
    });
  } catch (error) {
    if ((error as Error).name === 'AbortError') throw error;
    throw new Problem({ status: 0 });
  }
  if (answer.ok) return answer;
  const problem = problemOf(answer.status, await answer.text());
  if (answer.status === 401 && path !== '/sessions' && path !== '/sessions/current') whenSignedOut();
  throw problem;
}

async function json<T>(answer: Response): Promise<T> {
  const text = await answer.text();
  return (text ? JSON.parse(text) : undefined) as T;
}

export const get = async <T>(path: string, signal?: AbortSignal) =>
  json<T>(await send('GET', path, undefined, signal ? { signal } : {}));
export const post = async <T>(path: string, body?: unknown, headers: Record<string, string> = {}) =>
  json<T>(await send('POST', path, body, { headers }));
export const put = async <T>(path: string, body: unknown) => json<T>(await send('PUT', path, body));
export const patch = async <T>(path: string, body: unknown) => json<T>(await send('PATCH', path, body));
export const remove = async (path: string) => void (await send('DELETE', path));

/** crypto.randomUUID is missing where the context is not secure. */
export function randomName(): string {
  return Array.from(crypto.getRandomValues(new Uint8Array(16)), (byte) => byte.toString(16).padStart(2, '0')).join('');
}
