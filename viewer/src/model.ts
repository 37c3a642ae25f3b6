import {
  AnimationClip,
  Box3,
  BufferAttribute,
  BufferGeometry,
  Group,
  Material,
  Mesh,
  NearestFilter,
  Object3D,
  SkinnedMesh,
  Texture,
} from "three";
import { GLTFLoader, type GLTFParser } from "three/examples/jsm/loaders/GLTFLoader.js";

/** Who draws a mesh: a coordinate by its number, the coordinates of its corners, or nobody. */
export type PartId = number | "shared" | "origin";

/** Objects on this layer are neither drawn nor picked; other than `visible` it spares children. */
export const hiddenLayer = 1;

export interface Model {
  root: Group;
  /** The nodes of the coordinates by number. */
  nodes: Map<number, Object3D>;
  meshes: Map<PartId, Mesh[]>;
  partOf: Map<Object3D, PartId>;
  motions: AnimationClip[];
  /** The GLB's number of the texture of a material. */
  textureOf: Map<Material, number>;
}

function coordinateNumber(object: Object3D): number | null {
  // The loader changes names and keeps the right one.
  const name: unknown = object.userData["name"] ?? object.name;
  const found = typeof name === "string" ? /^coordinate[ _](\d+)$/.exec(name) : null;
  return found ? Number(found[1]) : null;
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
    meshes: new Map(),
    partOf: new Map(),
    motions: gltf.animations,
    textureOf: new Map(),
  };
  gltf.scene.traverse((object) => {
    const number = coordinateNumber(object);
    if (number !== null) {
      model.nodes.set(number, object);
    }
    if (object instanceof Mesh) {
      const part = partOf(object);
      model.meshes.set(part, [...(model.meshes.get(part) ?? []), object]);
      model.partOf.set(object, part);
      // Its box is that of rest.
      object.frustumCulled = !(object instanceof SkinnedMesh);
      eachMaterial(object, (material) => noteTexture(material, gltf.parser, model));
    }
  });
  return model;
}

function noteTexture(material: Material, parser: GLTFParser, model: Model): void {
  const map = (material as Material & { map?: Texture | null }).map;
  if (!map) {
    return;
  }
  map.magFilter = NearestFilter;
  const number = parser.associations.get(map)?.textures;
  if (number !== undefined) {
    model.textureOf.set(material, number);
  }
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
