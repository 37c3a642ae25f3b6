import { BufferGeometry, Mesh, Raycaster, Vector2, type Camera, type Intersection, type Object3D } from "three";

import { primitiveOf } from "./model.js";

export interface Hit {
  mesh: Mesh;
  /** Three corners for each triangle of the polygon. */
  corners: number[];
}

/** Calls back for each click that is not the end of a turn: with what lies there, or null. */
export function watchClicks(
  canvas: HTMLCanvasElement,
  camera: Camera,
  root: Object3D,
  clicked: (hit: Hit | null) => void,
): void {
  let down: { x: number; y: number } | null = null;
  canvas.addEventListener("pointerdown", (event) => {
    down = event.isPrimary && event.button === 0 ? { x: event.clientX, y: event.clientY } : null;
  });
  canvas.addEventListener("pointerup", (event) => {
    if (down && Math.hypot(event.clientX - down.x, event.clientY - down.y) < 5) {
      const area = canvas.getBoundingClientRect();
      const x = ((event.clientX - area.left) / area.width) * 2 - 1;
      const y = 1 - ((event.clientY - area.top) / area.height) * 2;
      clicked(hitAt(new Vector2(x, y), camera, root));
    }
    down = null;
  });
}

function hitAt(place: Vector2, camera: Camera, root: Object3D): Hit | null {
  const ray = new Raycaster();
  ray.setFromCamera(place, camera);
  const found = ray
    .intersectObject(root, true)
    .find((each): each is Intersection<Mesh> => each.object instanceof Mesh);
  if (!found || typeof found.faceIndex !== "number") {
    return null;
  }
  return { mesh: found.object, corners: polygonOf(found.object, found.faceIndex) };
}

/** A mesh holds polygons of one form, each as its triangles one behind the other. */
function polygonOf(mesh: Mesh<BufferGeometry>, triangle: number): number[] {
  const index = mesh.geometry.index;
  if (!index) {
    return [3 * triangle, 3 * triangle + 1, 3 * triangle + 2];
  }
  const size = index.count / primitiveOf(mesh).polygons;
  const length = size === 6 ? 6 : 3;
  const first = Math.floor((3 * triangle) / length) * length;
  return Array.from({ length }, (_, i) => index.getX(first + i));
}
