import type { ModelData } from "./data.js";
import { element } from "./dom.js";

/** What the file holds, and what is wrong with it. */
export function factsPanel(data: ModelData): HTMLElement {
  const counts = element("dl", { class: "counts" });
  for (const [name, value] of Object.entries(data.counts)) {
    counts.append(element("dt", {}, name), element("dd", {}, value.toLocaleString("en")));
  }
  const findings = data.findings.map(({ code, severity, text, place, occurrences }) => {
    const more = occurrences > 1 ? ` (${occurrences} times)` : "";
    return element(
      "li",
      { class: severity },
      element("strong", {}, `${severity} ${code}`),
      ` ${place ? `${place}: ` : ""}${text}${more}`,
    );
  });
  const warnings = data.warnings.map((text) => element("li", { class: "warning" }, text));
  return element(
    "section",
    {},
    element("h2", {}, "Facts"),
    counts,
    element("h3", {}, "Findings"),
    findings.length > 0
      ? element("ul", { class: "findings" }, ...findings)
      : element("p", {}, "None: the file is sound."),
    ...(warnings.length > 0
      ? [element("h3", {}, "About the picture"), element("ul", { class: "findings" }, ...warnings)]
      : []),
  );
}
