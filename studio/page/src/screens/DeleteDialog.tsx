// Deleting a video, and asking for the photos it was made with.
import { useState } from 'preact/hooks';
import type { Video } from '../api/types';
import { t } from '../app/strings';
import { deleteVideo } from '../app/studio';
import { Dialog } from '../ui/Dialog';
import { say, sayProblem } from '../ui/Toasts';

interface Properties {
  video: Video;
  onClose: () => void;
  onDeleted: () => void;
}

export function DeleteDialog({ video, onClose, onDeleted }: Properties) {
  const [photosToo, setPhotosToo] = useState(true);
  return (
    <Dialog title={t('delete.title')} onClose={onClose}>
      <p dir="auto">{t('delete.text', { title: video.title || video.template?.title || '' })}</p>
      <label class="check">
        <input type="checkbox" checked={photosToo} onChange={(event) => setPhotosToo(event.currentTarget.checked)} />
        <span>{t('delete.photos')}</span>
      </label>
      <footer class="dialog-foot">
        <button class="plain" onClick={onClose}>
          {t('word.cancel')}
        </button>
        <button
          class="primary danger"
          onClick={() =>
            deleteVideo(video.id, photosToo).then(() => {
              say(t('delete.done'));
              onClose();
              onDeleted();
            }, sayProblem)
          }
        >
          {t('video.delete')}
        </button>
      </footer>
    </Dialog>
  );
}
