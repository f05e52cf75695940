// Sending one file. XMLHttpRequest, because fetch cannot say how much of a body is out.
import { address, changeHeaders, Problem, problemOf } from './client';
import type { Upload } from './types';

export interface Sending {
  done: Promise<Upload>;
  cancel(): void;
}

/** `progress` hears 0 to 1; 1 while the studio prepares what it has received. */
export function sendFile(file: Blob, name: string, progress: (share: number) => void): Sending {
  const request = new XMLHttpRequest();
  const done = new Promise<Upload>((resolve, reject) => {
    request.upload.onprogress = (event) => event.lengthComputable && progress(event.loaded / event.total);
    request.onload = () => {
      if (request.status === 201) resolve(JSON.parse(request.responseText) as Upload);
      else reject(problemOf(request.status, request.responseText));
    };
    request.onerror = () => reject(new Problem({ status: 0 }));
    request.onabort = () => reject(new Problem({ status: 0, code: 'cancelled' }));
  });
  request.open('POST', address(`/uploads?name=${encodeURIComponent(name)}`));
  for (const [header, value] of Object.entries(changeHeaders())) request.setRequestHeader(header, value);
  request.setRequestHeader('Content-Type', 'application/octet-stream');
  request.send(file);
  return { done, cancel: () => request.abort() };
}
