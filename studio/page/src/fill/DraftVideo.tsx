// A small finished video of what is filled in, with its sound: made like any other, thrown away when it is closed.
import { useEffect, useState } from 'preact/hooks';
import type { ApiMusic, ApiValues, Template, Video } from '../api/types';
import { isActive } from '../api/types';
import { t } from '../app/strings';
import { cancelJob, deleteVideo, findVideo, makeVideo, studio } from '../app/studio';
import { Dialog } from '../ui/Dialog';
import { Bar } from '../ui/Bar';
import { sayProblem } from '../ui/Toasts';
import { Problem } from '../api/client';

interface Properties {
  template: Template;
  values: ApiValues;
  music: ApiMusic;
  onClose: () => void;
}

export function DraftVideo({ template, values, music, onClose }: Properties) {
  const [id, setId] = useState('');
  const [video, setVideo] = useState<Video | null>(null);
  const job = studio.use((value) => value.jobs[id]);

  useEffect(() => {
    let made = '';
    let isOpen = true;
    const end = () => {
      const last = studio.value.jobs[made];
      if (last && isActive(last)) cancelJob(made).catch(() => {});
      else if (last?.video) deleteVideo(last.video, false).catch(() => {});
    };
    makeVideo({ template: template.id, values, music, size: null, draft: true }).then(
      (started) => {
        made = started.id;
        if (isOpen) setId(made);
        else end();
      },
      (error) => {
        sayProblem(error);
        onClose();
      },
    );
    return () => {
      isOpen = false;
      if (made) end();
    };
  }, []);

  useEffect(() => {
    if (job?.state === 'done' && job.video) findVideo(job.video).then(setVideo, sayProblem);
    if (job?.state === 'failed') {
      sayProblem(new Problem(job.problem ?? { status: 500 }));
      onClose();
    }
    if (job?.state === 'cancelled') onClose();
  }, [job?.state]);

  return (
    <Dialog title={t('draft.title')} onClose={onClose}>
      <div class="draft-video" style={{ '--ratio': template.width / template.height }}>
        {video ? (
          <video src={video.file} poster={video.poster} controls autoPlay playsInline aria-label={template.title} />
        ) : (
          <>
            {template.thumbnail && <img src={template.thumbnail} alt="" />}
            <Bar job={job} />
          </>
        )}
      </div>
      <p class="hint">{t('draft.hint')}</p>
    </Dialog>
  );
}
