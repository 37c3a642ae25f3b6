import { byId, element } from "./dom.js";
import type { MotionPlayer } from "./motions.js";

const speeds = [0.1, 0.25, 0.5, 1, 2];

/** One speed slower (-1) or faster (1). */
export function changeSpeed(player: MotionPlayer, step: number): void {
  const at = speeds.indexOf(player.speed) + step;
  player.setSpeed(speeds[Math.min(speeds.length - 1, Math.max(0, at))] ?? 1);
}

export function stepFrame(player: MotionPlayer, frames: number, framesPerSecond: number): void {
  player.playing = false;
  player.seek((Math.round(player.time * framesPerSecond) + frames) / framesPerSecond);
}

/** The bar below the picture; it stays away from models without motions. Returns its update. */
export function motionBar(player: MotionPlayer, framesPerSecond: number): () => void {
  if (player.number === 0) {
    return () => {};
  }
  const option = (value: number, text: string) => element("option", { value }, text);
  const choice = element("select", { "aria-label": "Motion" });
  for (let i = 0; i < player.number; ++i) {
    choice.append(option(i, `motion ${i}`));
  }
  choice.addEventListener("change", () => player.choose(Number(choice.value)));

  const play = element("button", { type: "button", class: "play" });
  play.addEventListener("click", () => player.togglePlaying());
  const stop = element("button", { type: "button", "aria-label": "Stop, back to rest", title: "Stop (S)" }, "■");
  stop.addEventListener("click", () => player.stop());

  const place = element("input", { type: "range", min: 0, step: "any", "aria-label": "Frame" });
  place.addEventListener("input", () => {
    player.playing = false;
    player.seek(Number(place.value) / framesPerSecond);
  });
  const frame = element("output", { class: "frame" });

  const speed = element("select", { "aria-label": "Speed" });
  speed.append(...speeds.map((each) => option(each, `${each}×`)));
  speed.addEventListener("change", () => player.setSpeed(Number(speed.value)));

  const bar = byId("motion");
  bar.setAttribute("aria-label", "Motions");
  bar.append(choice, play, stop, place, frame, speed);
  bar.hidden = false;
  document.body.classList.add("with-motion");

  return () => {
    const length = player.length;
    // A motion that loops goes on; the slider shows its longest round.
    const shown = length > 0 && player.time > length ? player.time % length : player.time;
    choice.value = String(player.motion);
    play.textContent = player.playing ? "❚❚" : "▶";
    play.setAttribute("aria-label", player.playing ? "Pause" : "Play");
    play.title = `${player.playing ? "Pause" : "Play"} (Space)`;
    place.max = String(length * framesPerSecond);
    place.value = String(shown * framesPerSecond);
    frame.textContent = player.active
      ? `${Math.floor(shown * framesPerSecond)} / ${Math.round(length * framesPerSecond)}`
      : "at rest";
    speed.value = String(player.speed);
  };
}
