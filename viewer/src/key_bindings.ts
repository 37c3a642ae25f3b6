import type { KeyBinding } from "./keys.js";
import { changeSpeed, stepFrame } from "./motion_bar.js";
import type { MotionPlayer } from "./motions.js";
import type { PanelName } from "./panels.js";
import type { Parts } from "./parts.js";
import { showOnlySelected } from "./parts_panel.js";
import type { Stage } from "./stage.js";
import type { Switches } from "./switches.js";

export interface KeyTargets {
  stage: Stage;
  parts: Parts;
  player: MotionPlayer;
  switches: Switches;
  framesPerSecond: number;
  fit: () => void;
  /** Shows the model as seen from a direction. */
  look: (x: number, y: number, z: number) => void;
  togglePanel: (name: PanelName) => void;
  leave: () => void;
}

const turnStep = Math.PI / 24;
const panStep = 0.05;

/** All keys of the page. Those without a text are told by the line before them. */
export function keyBindings(targets: KeyTargets): KeyBinding[] {
  return [...viewKeys(targets), ...partKeys(targets), ...motionKeys(targets), ...panelKeys(targets)];
}

function viewKeys({ stage, switches, fit, look }: KeyTargets): KeyBinding[] {
  return [
    { key: "ArrowLeft", shown: "← → ↑ ↓", what: "turn", run: () => stage.turn(-turnStep, 0) },
    { key: "ArrowRight", what: "", run: () => stage.turn(turnStep, 0) },
    { key: "ArrowUp", what: "", run: () => stage.turn(0, turnStep) },
    { key: "ArrowDown", what: "", run: () => stage.turn(0, -turnStep) },
    {
      key: "ArrowLeft",
      shift: true,
      shown: "Shift ← → ↑ ↓",
      what: "move",
      run: () => stage.pan(-panStep, 0),
    },
    { key: "ArrowRight", shift: true, what: "", run: () => stage.pan(panStep, 0) },
    { key: "ArrowUp", shift: true, what: "", run: () => stage.pan(0, panStep) },
    { key: "ArrowDown", shift: true, what: "", run: () => stage.pan(0, -panStep) },
    { key: "+", shown: "+ -", what: "zoom", run: () => stage.zoom(1.2) },
    { key: "=", what: "", run: () => stage.zoom(1.2) },
    { key: "-", what: "", run: () => stage.zoom(1 / 1.2) },
    { key: "f", what: "fit what is lit up, or all", run: fit },
    { key: "1", what: "from the front", run: () => look(0, 0.15, 1) },
    { key: "2", what: "from the model's left", run: () => look(1, 0.15, 0) },
    { key: "3", what: "from behind", run: () => look(0, 0.15, -1) },
    { key: "4", what: "from the model's right", run: () => look(-1, 0.15, 0) },
    { key: "5", what: "from above", run: () => look(0, 1, 0.01) },
    { key: "l", what: "light on or off", run: () => switches.toggle("light") },
    { key: "w", what: "wireframe", run: () => switches.toggle("wireframe") },
    { key: "n", what: "normals", run: () => switches.toggle("normals") },
    { key: "x", what: "axes of the coordinates", run: () => switches.toggle("axes") },
  ];
}

function partKeys({ parts }: KeyTargets): KeyBinding[] {
  const toggle = (branch: boolean) => {
    const part = parts.selected;
    if (part !== null) {
      parts.show(branch ? parts.branch(part) : [part], !parts.isShown(part));
    }
  };
  return [
    { key: "j", shown: "J K", what: "light up the next or previous part", run: () => parts.selectNext(1) },
    { key: "k", what: "", run: () => parts.selectNext(-1) },
    { key: "v", what: "hide or show the part that is lit up", run: () => toggle(false) },
    { key: "v", shift: true, what: "the same with what hangs on it", run: () => toggle(true) },
    { key: "o", what: "show only this part", run: () => showOnlySelected(parts) },
    { key: "o", shift: true, what: "the same with what hangs on it", run: () => showOnlySelected(parts, true) },
    { key: "a", what: "show all parts", run: () => parts.showAll() },
  ];
}

function motionKeys({ player, framesPerSecond }: KeyTargets): KeyBinding[] {
  if (player.number === 0) {
    return [];
  }
  const next = (step: number) => player.choose((player.motion + step + player.number) % player.number);
  return [
    { key: " ", what: "play or pause the motion", run: () => player.togglePlaying() },
    { key: "s", what: "stop it, back to rest", run: () => player.stop() },
    { key: "m", what: "next motion", run: () => next(1) },
    { key: "m", shift: true, what: "previous motion", run: () => next(-1) },
    {
      key: ",",
      shown: ", .",
      what: "one frame back or on",
      run: () => stepFrame(player, -1, framesPerSecond),
    },
    { key: ".", what: "", run: () => stepFrame(player, 1, framesPerSecond) },
    { key: "[", shown: "[ ]", what: "slower or faster", run: () => changeSpeed(player, -1) },
    { key: "]", what: "", run: () => changeSpeed(player, 1) },
  ];
}

function panelKeys({ togglePanel, leave }: KeyTargets): KeyBinding[] {
  return [
    { key: "p", what: "parts", run: () => togglePanel("parts") },
    { key: "i", what: "image memory", run: () => togglePanel("images") },
    { key: "c", what: "counts and findings", run: () => togglePanel("facts") },
    { key: "h", shown: "H ?", what: "this help", run: () => togglePanel("help") },
    { key: "?", what: "", run: () => togglePanel("help") },
    { key: "Escape", what: "close the panel, or light nothing up", run: leave },
  ];
}
