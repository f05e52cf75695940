// Drafts, and the files chosen for them, in the browser's own database: they outlive the page and a studio that forgot.
const stores = ['drafts', 'files'] as const;
type StoreName = (typeof stores)[number];

let opened: Promise<IDBDatabase> | null = null;

function open(): Promise<IDBDatabase> {
  opened ??= new Promise((resolve, reject) => {
    const request = indexedDB.open('multiscene-studio', 1);
    request.onupgradeneeded = () => stores.forEach((name) => request.result.createObjectStore(name));
    request.onsuccess = () => resolve(request.result);
    request.onerror = () => reject(request.error);
  });
  return opened;
}

async function run<T>(
  store: StoreName,
  mode: IDBTransactionMode,
  work: (store: IDBObjectStore) => IDBRequest<T>,
): Promise<T | undefined> {
  try {
    const request = work((await open()).transaction(store, mode).objectStore(store));
    return await new Promise<T>((resolve, reject) => {
      request.onsuccess = () => resolve(request.result);
      request.onerror = () => reject(request.error);
    });
  } catch {
    // A private window without a database, or a full disk: the page works on without a draft.
    return undefined;
  }
}

export const load = <T>(store: StoreName, key: IDBValidKey) =>
  run<T>(store, 'readonly', (all) => all.get(key) as IDBRequest<T>);
export const keep = (store: StoreName, key: IDBValidKey, value: unknown) =>
  run(store, 'readwrite', (all) => all.put(value, key));
export const drop = (store: StoreName, key: IDBValidKey) => run(store, 'readwrite', (all) => all.delete(key));
export const keys = async (store: StoreName) => (await run(store, 'readonly', (all) => all.getAllKeys())) ?? [];
export const everything = async <T>(store: StoreName) =>
  ((await run(store, 'readonly', (all) => all.getAll())) ?? []) as T[];

export async function forgetDatabase(): Promise<void> {
  for (const name of stores) await run(name, 'readwrite', (all) => all.clear());
}
