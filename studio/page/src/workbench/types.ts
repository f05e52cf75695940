// What the studio says of the template on the workbench.
export interface Finding {
  severity: 'error' | 'warning';
  message: string;
  remedy: string;
  file: string;
  key: string;
  line: number;
}

export interface State {
  folder: string;
  name: string;
  revision: number;
  shown: number;
  video: { frames: number; framesPerSecond: number; width: number; height: number } | null;
  trials: string[];
  moments: Record<string, number>;
  problem: { message: string; file: string; key: string } | null;
  findings: Finding[];
  checked: number;
}

export interface Span {
  key: string;
  first: number;
  last: number;
}

export interface OutlineNode {
  key: string;
  type: string;
  name: string;
  parent: number;
  first: number | null;
  last: number | null;
  keys: Span[];
}

export interface OutlineScene {
  kind: 'scene' | 'transition';
  number: number;
  name: string;
  identifier: string;
  file: string;
  start: number;
  frames: number;
  nodes: OutlineNode[];
}

export interface Input {
  key: string;
  kind: 'text' | 'photo' | 'video';
  labels: Record<string, string>;
}

export interface Outline {
  scenes: OutlineScene[];
  inputs: Input[];
}

/** A node of a frame, as `trace` prints it. */
export interface LiveNode {
  key?: string;
  type: string;
  due?: boolean;
  visible: boolean;
  sceneAlpha: number;
  projTransform: number[];
  vertices?: number[];
  [field: string]: unknown;
}

export interface LiveScene {
  slot: string;
  sceneId: number;
  identifier: string;
  time: number;
  nodes: LiveNode[];
}

export interface Values {
  frame: number;
  scenes: LiveScene[];
}

/** A node of the outline; an empty key: the scene itself. */
export interface Selection {
  scene: number;
  key: string;
}
