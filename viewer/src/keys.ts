/** A key and what it does; the help panel lists them all. */
export interface KeyBinding {
  /** As `KeyboardEvent.key` has it. */
  key: string;
  shift?: boolean;
  /** What the help panel shows for several keys of one line; the line is left out when empty. */
  shown?: string;
  what: string;
  run: () => void;
}

/** Keys with which an element that has the focus is worked itself. */
function takesKey(target: EventTarget | null, key: string): boolean {
  if (!(target instanceof HTMLElement) || key === "Escape") {
    return false;
  }
  if (target.closest("select")) {
    return true;
  }
  if (key.startsWith("Arrow")) {
    return target.closest("input[type=range], #panel") !== null;
  }
  return (key === " " || key === "Enter") && target.closest("button, input[type=checkbox]") !== null;
}

export function watchKeys(bindings: readonly KeyBinding[]): void {
  document.addEventListener("keydown", (event) => {
    if (event.ctrlKey || event.altKey || event.metaKey || takesKey(event.target, event.key)) {
      return;
    }
    const key = event.key.length === 1 ? event.key.toLowerCase() : event.key;
    const letter = /^([a-z]|Arrow.*)$/.test(key); // other signs need Shift on some keyboards
    const found = bindings.find(
      (each) => each.key === key && (!letter || (each.shift ?? false) === event.shiftKey),
    );
    if (found) {
      event.preventDefault();
      found.run();
    }
  });
}

const names: Record<string, string> = {
  " ": "Space",
  ArrowLeft: "←",
  ArrowRight: "→",
  ArrowUp: "↑",
  ArrowDown: "↓",
  Escape: "Esc",
};

export function keyName(binding: KeyBinding): string {
  const name = names[binding.key] ?? binding.key.toUpperCase();
  return binding.shown ?? (binding.shift ? `Shift ${name}` : name);
}
