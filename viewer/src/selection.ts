import { MeshBasicMaterial, type Material, type Mesh } from "three";

import type { ModelData } from "./data.js";
import type { MemoryPanel, Texel } from "./memory_panel.js";
import { overlayOf, type Model } from "./model.js";
import type { Hit } from "./picking.js";

/** The polygon that was clicked last: outlined in the picture, and its texture in image memory. */
export class PolygonMark {
  private overlay: Mesh | null = null;
  private readonly outline = new MeshBasicMaterial({ color: 0xff3b6b, wireframe: true, depthTest: false });

  constructor(
    private readonly model: Model,
    private readonly data: ModelData,
    private readonly memory: MemoryPanel,
  ) {}

  show(hit: Hit | null): void {
    this.overlay?.removeFromParent();
    this.overlay?.geometry.dispose();
    this.overlay = null;
    if (!hit) {
      this.memory.mark(null, [], "Click a textured polygon or a rectangle.");
      return;
    }
    this.overlay = overlayOf(hit.mesh, this.outline, hit.corners);
    const number = this.model.textureOf.get(hit.mesh.material as Material);
    const picture = number === undefined ? undefined : this.data.pictures[number];
    const places = hit.mesh.geometry.getAttribute("uv");
    if (!picture || !places) {
      this.memory.mark(null, [], "This polygon has no texture.");
      return;
    }
    const texels: Texel[] = hit.corners.map((corner) => ({
      x: places.getX(corner) * picture.width,
      y: places.getY(corner) * picture.height,
    }));
    const table = picture.clut ? `, colour table at (${picture.clut.x}, ${picture.clut.y})` : "";
    this.memory.mark(
      picture,
      texels,
      `Texture: ${picture.width} × ${picture.height} texels of ${picture.depth} bits at ` +
        `(${picture.x}, ${picture.y})${table}`,
    );
  }
}
