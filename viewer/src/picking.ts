import { Mesh, Raycaster, Vector2, type Camera, type Intersection, type Object3D } from "three";

export interface Hit {
  mesh: Mesh;
  /** The triangle's number in the mesh, and its corners. */
  triangle: number;
  corners: [number, number, number];
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
  if (!found?.face || found.faceIndex === undefined || found.faceIndex === null) {
    return null;
  }
  const { a, b, c } = found.face;
  return { mesh: found.object, triangle: found.faceIndex, corners: [a, b, c] };
}
