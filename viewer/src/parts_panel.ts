import { counted, element } from "./dom.js";
import type { PartId } from "./model.js";
import { partName, type Parts } from "./parts.js";

/** The tree of coordinates with a switch and a count for each. */
export function partsPanel(parts: Parts): { panel: HTMLElement; update: () => void } {
  const rows = new Map<PartId, { row: HTMLElement; shown: HTMLInputElement; name: HTMLElement }>();
  const list = element("ul", { class: "tree" });
  for (const { id, depth, polygons } of parts.order) {
    const shown = element("input", { type: "checkbox", "aria-label": `Show ${partName(id)}` });
    shown.addEventListener("click", (event) => {
      parts.show(event.shiftKey ? parts.branch(id) : [id], shown.checked);
    });
    const name = element("button", { type: "button", class: "name" }, partName(id));
    name.addEventListener("click", () => parts.select(parts.selected === id ? null : id));
    const count = element("span", { class: "count", title: counted(polygons, "polygon") }, String(polygons));
    const row = element("li", { style: `--depth: ${Math.min(depth, 12)}` }, shown, name, count);
    rows.set(id, { row, shown, name });
    list.append(row);
  }
  const buttons = element("div", { class: "buttons" });
  const button = (text: string, run: () => void) => {
    const made = element("button", { type: "button" }, text);
    made.addEventListener("click", run);
    buttons.append(made);
  };
  button("Show all", () => parts.showAll());
  button("Only this", () => showOnlySelected(parts));
  button("Only its branch", () => showOnlySelected(parts, true));
  const panel = element(
    "section",
    {},
    element("h2", {}, "Parts"),
    element("p", { class: "hint" }, "Polygons of each coordinate. Shift changes a whole branch."),
    buttons,
    list,
  );

  let last: PartId | null = null;
  const update = () => {
    for (const [id, { row, shown, name }] of rows) {
      const selected = parts.selected === id;
      shown.checked = parts.isShown(id);
      row.classList.toggle("selected", selected);
      name.setAttribute("aria-pressed", String(selected));
    }
    if (parts.selected !== null && parts.selected !== last) {
      rows.get(parts.selected)?.row.scrollIntoView({ block: "nearest" });
    }
    last = parts.selected;
  };
  update();
  return { panel, update };
}

export function showOnlySelected(parts: Parts, branch = false): void {
  if (parts.selected !== null) {
    parts.showOnly(branch ? parts.branch(parts.selected) : [parts.selected]);
  }
}
