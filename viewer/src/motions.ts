import {
  AnimationClip,
  AnimationMixer,
  LoopOnce,
  type AnimationAction,
  type KeyframeTrack,
  type Object3D,
} from "three";

import type { Motion } from "./data.js";
import { Lists } from "./lists.js";

/** One coordinate of the motion that plays: its round is its own. */
interface Round {
  action: AnimationAction;
  seconds: number;
  loops: boolean;
}

/** Plays one motion at a time. Times are seconds from the motion's start. */
export class MotionPlayer {
  readonly number: number;
  playing = false;
  speed = 1;
  /** Starts again at the end of a motion that does not loop by itself. */
  repeats = true;

  private readonly mixer: AnimationMixer;
  private rounds: Round[] = [];
  private chosen = 0;
  private now = 0;
  private shown = false;

  constructor(
    root: Object3D,
    private readonly clips: ReadonlyMap<number, AnimationClip>,
    private readonly motions: readonly Motion[],
    private readonly framesPerSecond: number,
    private readonly nodeOf: (coordinate: number) => Object3D | undefined,
    private readonly changed: () => void,
  ) {
    this.mixer = new AnimationMixer(root);
    this.number = motions.length;
  }

  get motion(): number {
    return this.chosen;
  }

  /** The length of the longest round. */
  get length(): number {
    return (this.motions[this.chosen]?.frames ?? 0) / this.framesPerSecond;
  }

  get time(): number {
    return this.now;
  }

  /** Whether the model stands in the motion, not at rest. */
  get active(): boolean {
    return this.shown;
  }

  choose(motion: number): void {
    const playing = this.playing;
    this.stop();
    this.chosen = motion;
    this.playing = playing;
    this.changed();
  }

  togglePlaying(): void {
    this.playing = !this.playing;
    if (this.playing && !this.loops && this.now >= this.length) {
      this.now = 0;
    }
    this.changed();
  }

  /** Back to rest. */
  stop(): void {
    this.playing = false;
    this.now = 0;
    this.shown = false;
    this.mixer.stopAllAction();
    for (const { action } of this.rounds) {
      this.mixer.uncacheClip(action.getClip());
    }
    this.rounds = [];
    this.changed();
  }

  setSpeed(speed: number): void {
    this.speed = speed;
    this.changed();
  }

  seek(seconds: number): void {
    this.now = Math.max(0, seconds);
    this.show();
    this.changed();
  }

  /** Lets the time go on; true while the motion plays. */
  advance(seconds: number): boolean {
    if (!this.playing) {
      return false;
    }
    this.now += seconds * this.speed;
    if (!this.loops && this.now >= this.length) {
      this.now = this.repeats && this.length > 0 ? this.now % this.length : this.length;
      this.playing = this.repeats && this.length > 0;
    }
    this.show();
    this.changed();
    return this.playing;
  }

  private get loops(): boolean {
    return this.motions[this.chosen]?.tracks.some((track) => track.loops) ?? false;
  }

  private show(): void {
    if (!this.shown) {
      this.shown = true;
      this.start();
    }
    for (const { action, seconds, loops } of this.rounds) {
      action.time = loops && seconds > 0 ? this.now % seconds : Math.min(this.now, seconds);
    }
    this.mixer.update(0);
  }

  /** Each coordinate gets an action of its own, because rounds have lengths of their own. */
  private start(): void {
    const clip = this.clips.get(this.chosen);
    if (!clip) {
      return;
    }
    const tracksOf = new Lists<string, KeyframeTrack>();
    for (const track of clip.tracks) {
      tracksOf.add(track.name.slice(0, track.name.lastIndexOf(".")), track);
    }
    for (const track of this.motions[this.chosen]?.tracks ?? []) {
      const node = this.nodeOf(track.coordinate);
      if (!node) {
        continue;
      }
      const part = new AnimationClip(`${clip.name} ${track.coordinate}`, clip.duration, [
        ...tracksOf.of(node.uuid),
        ...tracksOf.of(node.name),
      ]);
      const action = this.mixer.clipAction(part);
      action.setLoop(LoopOnce, 1);
      action.clampWhenFinished = true;
      action.play();
      this.rounds.push({ action, seconds: track.frames / this.framesPerSecond, loops: track.loops });
    }
  }
}
