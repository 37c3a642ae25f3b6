import { MeshBasicMaterial, type Mesh } from "three";

import type { Picture } from "./data.js";
import type { MemoryPanel, Texel } from "./memory_panel.js";
import { overlayOf, primitiveOf } from "./model.js";
import type { Hit } from "./picking.js";

/** The polygon that was clicked last: outlined in the picture, and its texture in image memory. */
export class PolygonMark {
  private overlay: Mesh | null = null;
  private readonly outline = new MeshBasicMaterial({ color: 0xff3b6b, wireframe: true, depthTest: false });

  constructor(
    private readonly pictures: readonly Picture[],
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
    const texture = primitiveOf(hit.mesh).texture;
    const picture = texture && this.pictures[texture.picture];
    const places = hit.mesh.geometry.getAttribute("uv");
    if (!picture || !places) {
      this.memory.mark(null, [], "This polygon has no texture.");
      return;
    }
    // A quadrangle is told by two triangles that share an edge.
    const [a, b, c, , , d] = hit.corners;
    const around = (d === undefined ? [a, b, c] : [a, b, d, c]) as number[];
    const texels: Texel[] = around.map((corner) => ({
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
