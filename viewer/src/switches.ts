import { byId, element } from "./dom.js";
import type { Stage } from "./stage.js";

export type SwitchName = "light" | "wireframe" | "normals" | "axes";

const texts: Record<SwitchName, { label: string; title: string }> = {
  light: { label: "Light", title: "Light from the upper left (L)" },
  wireframe: { label: "Wire", title: "Edges of the triangles (W)" },
  normals: { label: "Normals", title: "Normals of the corners (N)" },
  axes: { label: "Axes", title: "Axes of the coordinates: x red, y green, z blue (X)" },
};

/** What is drawn besides the polygons, or in their place. */
export class Switches {
  private readonly on = new Set<SwitchName>(["light"]);
  private readonly buttons = new Map<SwitchName, HTMLButtonElement>();

  constructor(
    private readonly stage: Stage,
    private readonly effects: Record<SwitchName, (on: boolean) => void>,
  ) {
    for (const name of Object.keys(texts) as SwitchName[]) {
      const { label, title } = texts[name];
      const button = element("button", { type: "button", title, "aria-pressed": this.on.has(name) }, label);
      button.addEventListener("click", () => this.toggle(name));
      this.buttons.set(name, button);
      byId("tools").append(button);
    }
  }

  isOn(name: SwitchName): boolean {
    return this.on.has(name);
  }

  toggle(name: SwitchName): void {
    const on = !this.on.delete(name);
    if (on) {
      this.on.add(name);
    }
    this.buttons.get(name)?.setAttribute("aria-pressed", String(on));
    this.effects[name](on);
    this.stage.draw();
  }
}
