import { element } from "./dom.js";
import { keyName, type KeyBinding } from "./keys.js";

export function helpPanel(bindings: readonly KeyBinding[]): HTMLElement {
  const keys = element("dl", { class: "keys" });
  for (const binding of bindings) {
    if (binding.what !== "") {
      keys.append(
        element("dt", {}, ...keyName(binding).split(" ").map((name) => element("kbd", {}, name))),
        element("dd", {}, binding.what),
      );
    }
  }
  return element(
    "section",
    {},
    element("h2", {}, "Help"),
    element(
      "ul",
      { class: "hints" },
      element("li", {}, "Drag to turn, drag with the right button or two fingers to move, wheel or pinch to zoom."),
      element("li", {}, "Click a polygon to light up its coordinate and to see where its texture lies."),
    ),
    element("h3", {}, "Keys"),
    keys,
  );
}
