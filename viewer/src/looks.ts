import {
  AddEquation,
  CustomBlending,
  MeshBasicMaterial,
  MeshLambertMaterial,
  MeshStandardMaterial,
  NormalBlending,
  OneFactor,
  ReverseSubtractEquation,
  SrcAlphaFactor,
  ZeroFactor,
  type BlendingEquation,
  type Material,
  type Mesh,
} from "three";

import { eachMaterial } from "./model.js";

type Blend = "half" | "add" | "subtract" | "addQuarter";

/** What of a polygon and of what is behind it is drawn. */
const parts: Record<Exclude<Blend, "half">, { opacity: number; equation: BlendingEquation }> = {
  add: { opacity: 1, equation: AddEquation },
  subtract: { opacity: 1, equation: ReverseSubtractEquation },
  addQuarter: { opacity: 0.25, equation: AddEquation },
};

function blendOf(material: Material): Blend | null {
  const blend: unknown = material.userData["blend"];
  return blend === "half" || blend === "add" || blend === "subtract" || blend === "addQuarter"
    ? blend
    : null;
}

function setBlend(material: Material, blend: Blend): void {
  material.transparent = true;
  material.depthWrite = false;
  material.alphaTest = 0.01; // a texel that is not drawn takes nothing away either
  if (blend === "half") {
    material.blending = NormalBlending;
    material.opacity = 0.5;
    return;
  }
  material.blending = CustomBlending;
  material.opacity = parts[blend].opacity;
  material.blendEquation = parts[blend].equation;
  material.blendSrc = SrcAlphaFactor;
  material.blendDst = OneFactor;
  // The canvas itself stays opaque.
  material.blendEquationAlpha = AddEquation;
  material.blendSrcAlpha = ZeroFactor;
  material.blendDstAlpha = OneFactor;
}

/** Surfaces of the format do not shine: a plain material that scatters light alone. */
function plain(material: MeshStandardMaterial): MeshLambertMaterial {
  const made = new MeshLambertMaterial({
    name: material.name,
    color: material.color,
    map: material.map,
    vertexColors: material.vertexColors,
    side: material.side,
    alphaTest: material.alphaTest,
    transparent: material.transparent,
    opacity: material.opacity,
    depthWrite: material.depthWrite,
  });
  made.userData = material.userData;
  return made;
}

/** Gives the materials of a mesh what glTF cannot say. Each material is changed once. */
export class Looks {
  private readonly made = new Map<Material, Material>();

  apply(mesh: Mesh): void {
    mesh.material = Array.isArray(mesh.material)
      ? mesh.material.map((material) => this.look(material))
      : this.look(mesh.material);
  }

  private look(material: Material): Material {
    let made = this.made.get(material);
    if (!made) {
      made = material instanceof MeshStandardMaterial ? plain(material) : material;
      const blend = blendOf(material);
      if (blend) {
        setBlend(made, blend);
      }
      this.made.set(material, made);
    }
    return made;
  }
}

export function setWireframe(meshes: Iterable<Mesh>, on: boolean): void {
  for (const mesh of meshes) {
    eachMaterial(mesh, (material) => {
      if (material instanceof MeshBasicMaterial || material instanceof MeshLambertMaterial) {
        material.wireframe = on;
      }
    });
  }
}
