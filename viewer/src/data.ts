/** What the page was filled with: the model as GLB, and what GLB cannot tell. */

export interface Coordinate {
  parent: number | null;
  polygons: number;
}

export interface Track {
  coordinate: number;
  /** The length of one round. */
  frames: number;
  loops: boolean;
}

export interface Motion {
  frames: number;
  tracks: Track[];
}

export interface Finding {
  code: string;
  severity: string;
  text: string;
  place: string;
  occurrences: number;
}

/** A rectangle of image memory: columns of 16 bits, and lines. */
export interface Rectangle {
  x: number;
  y: number;
  width: number;
  height: number;
}

export interface ImagePlace extends Rectangle {
  image: number;
  clut: boolean;
  /** "4 bits", and so on; empty for a colour table. */
  depth: string;
}

export interface Memory {
  /** Columns and lines from the first on. */
  width: number;
  height: number;
  png: string;
}

/** Where a picture of the GLB lies in image memory: its first texel's place, its size in texels, and the
 * bits of a texel. */
export interface Picture {
  x: number;
  y: number;
  width: number;
  height: number;
  depth: number;
  clut: { x: number; y: number } | null;
}

export interface ModelData {
  name: string;
  counts: Record<string, number>;
  coordinates: Coordinate[];
  sharedPolygons: number;
  /** Those that no coordinate draws. */
  unownedPolygons: number;
  framesPerSecond: number;
  motions: Motion[];
  findings: Finding[];
  warnings: string[];
  /** None in a file without images. */
  memory: Memory | null;
  places: ImagePlace[];
  pictures: Picture[];
}

function textOf(id: string): string {
  return document.getElementById(id)?.textContent ?? "";
}

export function readData(): ModelData {
  return JSON.parse(textOf("model-data")) as ModelData;
}

export function readGlb(): ArrayBuffer {
  const text = atob(textOf("model-glb").trim());
  const bytes = new Uint8Array(text.length);
  for (let i = 0; i < text.length; ++i) {
    bytes[i] = text.charCodeAt(i);
  }
  return bytes.buffer;
}
