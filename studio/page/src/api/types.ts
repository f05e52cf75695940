// What the studio's HTTP interface says and takes, as far as the page uses it.

export interface Session {
  token: string;
  kind: string;
  name: string | null;
}

export interface Pairing {
  code: string;
  url: string;
  qr: string;
}

export interface Settings {
  version: string;
  languages: string[];
  isSecure: boolean;
  isLocal: boolean;
  timelineShare: boolean;
  limits: { photoBytes: number; videoBytes: number; soundBytes: number; queue: number };
  fence: 'full' | 'partial' | 'none';
  pairing: Pairing | null;
  ratingAsked: boolean;
  usageSharing: boolean;
}

export interface Device {
  id: string;
  kind: string;
  name: string | null;
  seen: string;
  isCurrent: boolean;
}

export interface Card {
  id: number;
  name: string;
  title: string;
  seconds: number;
  frames: number;
  framesPerSecond: number;
  width: number;
  height: number;
  photos: number;
  videos: number;
  state: 'installed' | 'sample' | 'offered';
  isNew: boolean;
  newerOffered: boolean;
  needsNewerVersion: boolean;
  megabytes: number;
  thumbnail: string | null;
  preview: string | null;
}

export interface Input {
  key: string;
  kind: 'text' | 'photo' | 'video';
  label: string;
  maxCharacters?: number;
  maxLines?: number;
  aspectWidth?: number;
  aspectHeight?: number;
  seconds?: number | null;
}

export interface Finding {
  severity: string;
  message: string;
  key?: string;
}

export interface Template extends Card {
  inputs: Input[];
  sampleValues: Record<string, unknown> | null;
  findings: Finding[];
  music: boolean;
}

export interface Upload {
  id: string;
  kind: 'photo' | 'video' | 'sound';
  name: string;
  width?: number;
  height?: number;
  seconds?: number | null;
  proxy: string | null;
}

/** Shares of the upright photo; the rectangle is turned clockwise by `angle` degrees about its centre. */
export interface Crop {
  x: number;
  y: number;
  width: number;
  height: number;
  angle: number;
}

export type ApiValue = string | { upload: string; crop?: Crop } | { upload: string; start: number; volume: number };
export type ApiValues = Record<string, ApiValue>;

export interface ApiMusic {
  kind: 'template' | 'none' | 'own';
  upload?: string;
  volume: number;
  start: number;
}

export interface Preview {
  id: string;
  frames: number;
  framesPerSecond: number;
  width: number;
  height: number;
  moments: Record<string, number>;
}

export interface Check {
  missing: { key: string; label: string }[];
  findings: Finding[];
  fits: Record<string, 'fits' | 'smaller' | 'refused'>;
  seconds: number | null;
  place: number | null;
}

export interface ProblemBody {
  status: number;
  code?: string;
  title?: string;
  detail?: string;
  errors?: { pointer?: string; key?: string; message: string; remedy?: string }[];
}

export interface Job {
  id: string;
  kind: 'video' | 'draft' | 'install' | 'refresh';
  state: 'queued' | 'running' | 'cancelling' | 'done' | 'failed' | 'cancelled' | 'expired';
  stage: 'preparing' | 'rendering' | 'mixing' | 'publishing' | null;
  template: { id: number; title: string } | null;
  frame: number;
  total: number;
  secondsRemaining: number | null;
  place: number | null;
  created: string;
  problem: ProblemBody | null;
  video: string | null;
  title: string | null;
}

export interface JobRequest {
  template: number;
  /** Null, in what a job was made with: an upload that is gone. */
  values: Record<string, ApiValue | null>;
  music: ApiMusic;
  size?: { width: number; height: number } | null;
  draft?: boolean;
  title?: string;
}

export interface Video {
  id: string;
  title: string | null;
  job: string | null;
  template: { id: number; title: string } | null;
  bytes: number;
  width: number;
  height: number;
  seconds: number;
  hasSound: boolean;
  kept: boolean;
  created: string;
  expires: string | null;
  file: string;
  poster: string;
}

export function isActive(job: Job): boolean {
  return job.state === 'queued' || job.state === 'running' || job.state === 'cancelling';
}
