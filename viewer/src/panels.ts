import { byId, element } from "./dom.js";

export type PanelName = "parts" | "images" | "facts" | "help";

const titles: Record<PanelName, string> = {
  parts: "Parts",
  images: "Images",
  facts: "Facts",
  help: "Help",
};

/** The panels beside the picture, of which one or none is open. */
export class Panels {
  private readonly panel = byId("panel");
  private readonly buttons = new Map<PanelName, HTMLButtonElement>();
  private open: PanelName | null = null;

  constructor(private readonly contents: Record<PanelName, HTMLElement>) {
    for (const name of Object.keys(titles) as PanelName[]) {
      const button = element(
        "button",
        { type: "button", "aria-controls": "panel", "aria-expanded": "false" },
        titles[name],
      );
      button.addEventListener("click", () => this.toggle(name));
      this.buttons.set(name, button);
      byId("tabs").append(button);
    }
    const close = element("button", { type: "button", class: "close", "aria-label": "Close panel" }, "×");
    close.addEventListener("click", () => this.close());
    this.panel.append(close, ...Object.values(contents));
  }

  get isOpen(): boolean {
    return this.open !== null;
  }

  toggle(name: PanelName): void {
    this.set(this.open === name ? null : name);
  }

  close(): void {
    const button = this.open ? this.buttons.get(this.open) : undefined;
    const inside = this.panel.contains(document.activeElement);
    this.set(null);
    if (inside) {
      button?.focus();
    }
  }

  private set(name: PanelName | null): void {
    this.open = name;
    this.panel.hidden = name === null;
    document.body.classList.toggle("with-panel", name !== null);
    if (name) {
      this.panel.setAttribute("aria-label", titles[name]);
    }
    for (const [each, button] of this.buttons) {
      button.setAttribute("aria-expanded", String(each === name));
      this.contents[each].hidden = each !== name;
    }
  }
}
