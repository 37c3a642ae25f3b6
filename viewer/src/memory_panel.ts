import type { ImagePlace, Memory, ModelData, Picture, Rectangle } from "./data.js";
import { element, svg } from "./dom.js";

/** A corner's place in a texture, in texels. */
export interface Texel {
  x: number;
  y: number;
}

export interface MemoryPanel {
  panel: HTMLElement;
  /** Marks the texture of a polygon; null takes the mark away. */
  mark: (picture: Picture | null, texels: Texel[], what: string) => void;
}

const zooms = [1, 2, 4, 8];

function placeText({ x, y, width, height }: Rectangle): string {
  return `${width} × ${height} at (${x}, ${y})`;
}

/** Image memory with the rectangle of every image. */
export function memoryPanel(data: ModelData): MemoryPanel {
  const panel = element("section", {}, element("h2", {}, "Image memory"));
  const memory = data.memory;
  if (!memory) {
    panel.append(element("p", {}, "The file holds no images."));
    return { panel, mark: () => {} };
  }
  const shown = usedPart(memory, data.places);
  const overlay = svg(
    "svg",
    { viewBox: `${shown.x} ${shown.y} ${shown.width} ${shown.height}`, preserveAspectRatio: "none" },
    svg("image", {
      href: `data:image/png;base64,${memory.png}`,
      width: memory.width,
      height: memory.height,
      preserveAspectRatio: "none",
    }),
  );
  const sheet = element("div", { class: "sheet", style: `--ratio: ${shown.width} / ${shown.height}` }, overlay);
  const view = new View(shown, sheet, data.places.find(({ clut }) => !clut) ?? shown);
  const told = element("p", { class: "told", role: "status" }, "Click a textured polygon or a rectangle.");
  panel.append(
    element(
      "p",
      { class: "hint" },
      `Columns ${shown.x} to ${shown.x + shown.width - 1} of 16 bits, lines ${shown.y} to ${shown.y + shown.height - 1}. Texels of 4 and 8 bits are squeezed into their columns.`,
    ),
    zoomButtons(sheet, view),
    view.element,
    told,
    imageList(data, overlay, view),
  );
  return { panel, mark: marker(overlay, told, view) };
}

/** The part of the sheet that is seen, around what was looked at last. */
class View {
  readonly element: HTMLElement;
  private middle: Texel;

  constructor(
    private readonly shown: Rectangle,
    private readonly sheet: HTMLElement,
    first: Rectangle,
  ) {
    this.element = element(
      "div",
      { class: "memory", tabindex: 0, role: "group", "aria-label": "Image memory" },
      sheet,
    );
    this.middle = middleOf(first);
    // The panel may have been closed when it was to look.
    new ResizeObserver(() => this.look()).observe(this.element);
  }

  /** Looks at a place of image memory, or again at the last one. */
  look(place: Texel = this.middle): void {
    this.middle = place;
    const { shown, sheet, element } = this;
    element.scrollTo({
      left: ((place.x - shown.x) / shown.width) * sheet.clientWidth - element.clientWidth / 2,
      top: ((place.y - shown.y) / shown.height) * sheet.clientHeight - element.clientHeight / 2,
    });
  }
}

function middleOf({ x, y, width, height }: Rectangle): Texel {
  return { x: x + width / 2, y: y + height / 2 };
}

/** The part of image memory that images cover. */
function usedPart(memory: Memory, places: readonly ImagePlace[]): Rectangle {
  let [x, y, right] = [Infinity, Infinity, 0];
  for (const place of places) {
    x = Math.min(x, place.x);
    y = Math.min(y, place.y);
    right = Math.max(right, place.x + place.width);
  }
  return { x, y, width: Math.min(memory.width, right) - x, height: memory.height - y };
}

function zoomButtons(sheet: HTMLElement, view: View): HTMLElement {
  const group = element("div", { class: "buttons", role: "group", "aria-label": "Zoom of the images" });
  const buttons = zooms.map((zoom) => {
    const button = element("button", { type: "button", "aria-pressed": zoom === 1 }, `${zoom}×`);
    button.addEventListener("click", () => {
      sheet.style.setProperty("--zoom", String(zoom));
      for (const each of buttons) {
        each.setAttribute("aria-pressed", String(each === button));
      }
      view.look();
    });
    return button;
  });
  group.append(...buttons);
  return group;
}

function placeName({ image, clut }: ImagePlace): string {
  return `image ${image}${clut ? ", colour table" : ""}`;
}

/** The rectangles, and a list in which each can be chosen by its name. */
function imageList(data: ModelData, overlay: SVGElement, view: View): HTMLElement {
  const list = element("ul", { class: "images" });
  let chosen = -1;
  const rows: { rectangle: SVGElement; button: HTMLElement }[] = [];
  const choose = (index: number) => {
    chosen = chosen === index ? -1 : index;
    rows.forEach(({ rectangle, button }, each) => {
      rectangle.classList.toggle("chosen", each === chosen);
      button.setAttribute("aria-pressed", String(each === chosen));
    });
    rows[chosen]?.button.scrollIntoView({ block: "nearest" });
    const place = data.places[chosen];
    if (place) {
      view.look(middleOf(place));
    }
  };
  data.places.forEach((place, index) => {
    const { x, y, width, height, clut, depth } = place;
    const rectangle = svg(
      "rect",
      { x, y, width, height, class: clut ? "place clut" : "place", "vector-effect": "non-scaling-stroke" },
      svg("title", {}, `${placeName(place)}: ${placeText(place)}`),
    );
    rectangle.addEventListener("click", () => choose(index));
    overlay.append(rectangle);
    const button = element(
      "button",
      { type: "button", "aria-pressed": false },
      element("strong", {}, placeName(place)),
      ` ${placeText(place)}${depth === "" ? "" : `, ${depth}`}`,
    );
    button.addEventListener("click", () => choose(index));
    rows.push({ rectangle, button });
    list.append(element("li", {}, button));
  });
  return list;
}

function marker(overlay: SVGElement, told: HTMLElement, view: View): MemoryPanel["mark"] {
  const mark = svg("g", { class: "mark" });
  return (picture, texels, what) => {
    mark.replaceChildren();
    told.textContent = what;
    if (!picture) {
      return;
    }
    const columns = picture.depth / 16;
    const points = area(picture, texels).map(({ x, y }) => ({ x: picture.x + x * columns, y: picture.y + y }));
    const shape = { points: points.map(({ x, y }) => `${x},${y}`).join(" "), "vector-effect": "non-scaling-stroke" };
    mark.append(svg("polygon", { ...shape, class: "below" }), svg("polygon", shape));
    if (picture.clut) {
      const size = { width: 2 ** picture.depth, height: 1, "vector-effect": "non-scaling-stroke" };
      mark.append(svg("rect", { ...picture.clut, ...size }));
    }
    overlay.append(mark);
    const [first] = points;
    if (first) {
      view.look(first);
    }
  };
}

/** What a polygon uses of its picture; all of it, when it repeats it. */
function area({ width, height }: Picture, texels: Texel[]): Texel[] {
  const inside = texels.every(({ x, y }) => x >= 0 && y >= 0 && x <= width && y <= height);
  return inside && texels.length > 2
    ? texels
    : [{ x: 0, y: 0 }, { x: width, y: 0 }, { x: width, y: height }, { x: 0, y: height }];
}
