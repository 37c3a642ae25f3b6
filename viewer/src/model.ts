import {
  AnimationClip,
  Box3,
  BufferAttribute,
  BufferGeometry,
  Group,
  Material,
  Mesh,
  Object3D,
  SkinnedMesh,
} from "three";
import { GLTFLoader } from "three/examples/jsm/loaders/GLTFLoader.js";

import { Lists } from "./lists.js";

/** Who draws a mesh: a coordinate by its number, the coordinates of its corners, or nobody. */
export type PartId = number | "shared" | "origin";

/** Objects on this layer are neither drawn nor picked; other than `visible` it spares children. */
export const hiddenLayer = 1;

export interface Model {
  root: Group;
  /** The nodes of the coordinates by number. */
  nodes: Map<number, Object3D>;
  meshes: Lists<PartId, Mesh>;
  partOf: Map<Object3D, PartId>;
  /** By the number of the motion; one that moves nothing has none. */
  motions: Map<number, AnimationClip>;
}

/** What the GLB says of the polygons of a mesh. */
export interface Primitive {
  form: string;
  polygons: number;
  texture?: { picture: number };
}

export function primitiveOf(mesh: Mesh): Primitive {
  return mesh.geometry.userData as Primitive;
}

function coordinateNumber(object: Object3D): number | null {
  const number: unknown = object.userData["coordinate"];
  return typeof number === "number" ? number : null;
}

function motionNumber(clip: AnimationClip): number {
  return Number(/^motion (\d+)$/.exec(clip.name)?.[1]);
}

function partOf(mesh: Mesh): PartId {
  if (mesh instanceof SkinnedMesh) {
    return "shared";
  }
  for (let object: Object3D | null = mesh; object; object = object.parent) {
    const number = coordinateNumber(object);
    if (number !== null) {
      return number;
    }
  }
  return "origin";
}

export function eachMaterial(mesh: Mesh, visit: (material: Material) => void): void {
  for (const material of Array.isArray(mesh.material) ? mesh.material : [mesh.material]) {
    visit(material);
  }
}

export async function loadModel(glb: ArrayBuffer): Promise<Model> {
  const gltf = await new GLTFLoader().parseAsync(glb, "");
  const model: Model = {
    root: gltf.scene,
    nodes: new Map(),
    meshes: new Lists(),
    partOf: new Map(),
    motions: new Map(gltf.animations.map((clip) => [motionNumber(clip), clip])),
  };
  gltf.scene.traverse((object) => {
    const number = coordinateNumber(object);
    if (number !== null) {
      model.nodes.set(number, object);
    }
    if (object instanceof Mesh) {
      const part = partOf(object);
      model.meshes.add(part, object);
      model.partOf.set(object, part);
      // Its box is that of rest.
      object.frustumCulled = !(object instanceof SkinnedMesh);
    }
  });
  return model;
}

/** The box of what is shown, as it stands now. */
export function boxOf(meshes: Iterable<Mesh>): Box3 {
  const box = new Box3();
  for (const mesh of meshes) {
    if (mesh.layers.isEnabled(hiddenLayer)) {
      continue;
    }
    mesh.updateWorldMatrix(true, false);
    if (mesh instanceof SkinnedMesh) {
      mesh.computeBoundingBox();
      box.union(mesh.boundingBox!.clone().applyMatrix4(mesh.matrixWorld));
    } else {
      mesh.geometry.computeBoundingBox();
      box.union(mesh.geometry.boundingBox!.clone().applyMatrix4(mesh.matrixWorld));
    }
  }
  return box;
}

/** A mesh that draws some corners of another one, and moves with it. */
export function overlayOf(mesh: Mesh, material: Material, corners?: number[]): Mesh {
  let geometry = mesh.geometry;
  if (corners) {
    geometry = new BufferGeometry();
    for (const [name, attribute] of Object.entries(mesh.geometry.attributes)) {
      geometry.setAttribute(name, attribute);
    }
    geometry.setIndex(new BufferAttribute(new Uint32Array(corners), 1));
  }
  let overlay: Mesh;
  if (mesh instanceof SkinnedMesh) {
    const skinned = new SkinnedMesh(geometry, material);
    skinned.bind(mesh.skeleton, mesh.bindMatrix);
    skinned.frustumCulled = false;
    overlay = skinned;
  } else {
    overlay = new Mesh(geometry, material);
  }
  overlay.renderOrder = 10;
  overlay.raycast = () => {};
  mesh.add(overlay);
  return overlay;
}
