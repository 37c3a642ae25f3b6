/** Elements of the page, made in one call each. Texts are set as text, never as markup. */

type Child = Node | string;
type Attributes = Record<string, string | number | boolean>;

export function element<Name extends keyof HTMLElementTagNameMap>(
  name: Name,
  attributes: Attributes = {},
  ...children: Child[]
): HTMLElementTagNameMap[Name] {
  const made = document.createElement(name);
  setAttributes(made, attributes);
  made.append(...children);
  return made;
}

export function svg<Name extends keyof SVGElementTagNameMap>(
  name: Name,
  attributes: Attributes = {},
  ...children: Child[]
): SVGElementTagNameMap[Name] {
  const made = document.createElementNS("http://www.w3.org/2000/svg", name);
  setAttributes(made, attributes);
  made.append(...children);
  return made;
}

function setAttributes(target: Element, attributes: Attributes): void {
  for (const [name, value] of Object.entries(attributes)) {
    if (typeof value !== "boolean" || name.startsWith("aria-")) {
      target.setAttribute(name, String(value));
    } else {
      target.toggleAttribute(name, value);
    }
  }
}

export function byId(id: string): HTMLElement {
  const found = document.getElementById(id);
  if (!found) {
    throw new Error(`the page has no "${id}"`);
  }
  return found;
}

/** "1 polygon", "2 polygons". */
export function counted(number: number, what: string): string {
  return `${number} ${what}${number === 1 ? "" : "s"}`;
}
