import { Color, MeshBasicMaterial, type Mesh } from "three";

import type { ModelData } from "./data.js";
import { Lists } from "./lists.js";
import { hiddenLayer, overlayOf, type Model, type PartId } from "./model.js";

/** The parts of the model: what is shown and what is lit up. */
export class Parts {
  /** In the order of the tree, children behind their parents. */
  readonly order: { id: PartId; depth: number; polygons: number }[] = [];
  /** Called when something is shown, hidden or lit up. */
  changed: () => void = () => {};

  private readonly hidden = new Set<PartId>();
  private readonly parents: (number | null)[];
  private overlays: Mesh[] = [];
  private chosen: PartId | null = null;
  private readonly light = new MeshBasicMaterial({
    color: new Color(0xffa31a),
    transparent: true,
    opacity: 0.55,
    depthWrite: false,
    polygonOffset: true,
    polygonOffsetFactor: -2,
    polygonOffsetUnits: -2,
  });

  constructor(
    private readonly model: Model,
    data: ModelData,
  ) {
    this.parents = data.coordinates.map(({ parent }) => parent);
    this.addTree(data);
    if (data.sharedPolygons > 0 || model.meshes.has("shared")) {
      this.order.push({ id: "shared", depth: 0, polygons: data.sharedPolygons });
    }
    if (model.meshes.has("origin")) {
      this.order.push({ id: "origin", depth: 0, polygons: data.unownedPolygons });
    }
  }

  get selected(): PartId | null {
    return this.chosen;
  }

  isShown(part: PartId): boolean {
    return !this.hidden.has(part);
  }

  meshesOf(part: PartId): readonly Mesh[] {
    return this.model.meshes.of(part);
  }

  shownMeshes(): Mesh[] {
    return [...this.model.meshes.entries()].flatMap(([part, meshes]) => (this.isShown(part) ? meshes : []));
  }

  /** The part itself and all that hangs on it. */
  branch(part: PartId): PartId[] {
    const first = this.order.findIndex(({ id }) => id === part);
    const depth = this.order[first]?.depth ?? 0;
    let end = first + 1;
    while (end < this.order.length && typeof this.order[end]!.id === "number" && this.order[end]!.depth > depth) {
      ++end;
    }
    return this.order.slice(first, end).map(({ id }) => id);
  }

  show(parts: Iterable<PartId>, on: boolean): void {
    for (const part of parts) {
      if (on) {
        this.hidden.delete(part);
      } else {
        this.hidden.add(part);
      }
      for (const mesh of this.meshesOf(part)) {
        mesh.layers.set(on ? 0 : hiddenLayer);
      }
    }
    this.select(this.chosen);
  }

  showAll(): void {
    this.show([...this.hidden], true);
  }

  showOnly(parts: readonly PartId[]): void {
    const kept = new Set(parts);
    this.show(this.order.map(({ id }) => id).filter((id) => !kept.has(id)), false);
    this.show(parts, true);
  }

  /** Lights a part up, or none. */
  select(part: PartId | null): void {
    this.chosen = part;
    for (const overlay of this.overlays) {
      overlay.removeFromParent();
    }
    this.overlays =
      part !== null && this.isShown(part)
        ? this.meshesOf(part).map((mesh) => overlayOf(mesh, this.light))
        : [];
    this.changed();
  }

  selectNext(step: number): void {
    const at = this.order.findIndex(({ id }) => id === this.chosen);
    const number = this.order.length;
    const next = at < 0 ? (step > 0 ? 0 : number - 1) : (at + step + number) % number;
    const row = this.order[next];
    if (row) {
      this.select(row.id);
    }
  }

  private addTree(data: ModelData): void {
    const children = new Lists<number | null, number>();
    this.parents.forEach((parent, coordinate) => children.add(parent, coordinate));
    const open: { id: number; depth: number }[] = [];
    const openAll = (parent: number | null, depth: number) => {
      for (const id of [...children.of(parent)].reverse()) {
        open.push({ id, depth });
      }
    };
    openAll(null, 0);
    for (let next = open.pop(); next; next = open.pop()) {
      const { id, depth } = next;
      this.order.push({ id, depth, polygons: data.coordinates[id]!.polygons });
      openAll(id, depth + 1);
    }
  }
}

export function partName(part: PartId): string {
  return part === "shared"
    ? "over several coordinates"
    : part === "origin"
      ? "no coordinate"
      : `coordinate ${part}`;
}
