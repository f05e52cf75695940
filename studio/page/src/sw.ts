// Keeps the page itself, so that it opens at once and without the studio, and the list of templates as last seen.
// Photos, videos and everything else that is somebody's own never go through here.
declare const self: ServiceWorkerGlobalScope;
declare const shellFiles: string[];
declare const shellVersion: string;

const shell = `shell-${shellVersion}`;
const seen = 'templates';

interface ServiceWorkerGlobalScope extends EventTarget {
  registration: { showNotification(title: string): Promise<void> };
  clients: { claim(): Promise<void>; openWindow(address: string): Promise<unknown> };
  skipWaiting(): Promise<void>;
}
interface Lasting extends Event {
  waitUntil(work: Promise<unknown>): void;
}
interface Fetch extends Lasting {
  request: Request;
  respondWith(answer: Promise<Response>): void;
}
interface Click extends Lasting {
  notification: { close(): void; data: unknown };
}

self.addEventListener('install', (event) => {
  const work = caches
    .open(shell)
    .then((cache) => cache.addAll(shellFiles))
    .then(() => self.skipWaiting());
  (event as Lasting).waitUntil(work);
});

self.addEventListener('activate', (event) => {
  const work = caches
    .keys()
    .then((names) => Promise.all(names.filter((name) => name !== shell && name !== seen).map((name) => caches.delete(name))))
    .then(() => self.clients.claim());
  (event as Lasting).waitUntil(work);
});

async function kept(request: Request, name: string, options?: CacheQueryOptions): Promise<Response | undefined> {
  return (await caches.open(name)).match(request, options);
}

/** From the studio, and remembered; what is remembered when the studio is away, or starting. */
async function newest(request: Request, name: string): Promise<Response> {
  const answer = await fetch(request).catch(() => Response.error());
  if (answer.status === 200) await (await caches.open(name)).put(request, answer.clone());
  if (answer.status && answer.status < 500) return answer;
  return (await kept(request, name, { ignoreSearch: request.mode === 'navigate' })) ?? answer;
}

async function keptFirst(request: Request): Promise<Response> {
  return (await kept(request, shell)) ?? fetch(request);
}

self.addEventListener('fetch', (event) => {
  const { request, respondWith } = event as Fetch;
  const { pathname, origin } = new URL(request.url);
  if (request.method !== 'GET' || origin !== location.origin) return;
  const answer = (work: Promise<Response>) => respondWith.call(event, work);
  if (pathname === '/') answer(newest(request, shell));
  else if (shellFiles.includes(pathname)) answer(keptFirst(request));
  else if (/^\/api\/v1\/templates(\/\d+(\/thumbnail)?)?$/.test(pathname)) answer(newest(request, seen));
});

self.addEventListener('notificationclick', (event) => {
  const { notification } = event as Click;
  notification.close();
  (event as Lasting).waitUntil(self.clients.openWindow(typeof notification.data === 'string' ? notification.data : '/'));
});

export {};
