import {
  AxesHelper,
  BufferAttribute,
  BufferGeometry,
  LineBasicMaterial,
  LineSegments,
  Material,
  Mesh,
  Object3D,
  SkinnedMesh,
  Vector3,
} from "three";

import { hiddenLayer } from "./model.js";

/** The axes of each coordinate: x red, y green, z blue. */
export class CoordinateAxes {
  private readonly axes: Object3D[] = [];

  constructor(nodes: Iterable<Object3D>, size: number) {
    for (const node of nodes) {
      const axes = new AxesHelper(size);
      const material = axes.material as Material;
      material.depthTest = false;
      material.transparent = true;
      axes.renderOrder = 20;
      axes.visible = false;
      axes.raycast = () => {};
      node.add(axes);
      this.axes.push(axes);
    }
  }

  show(on: boolean): void {
    for (const axes of this.axes) {
      axes.visible = on;
    }
  }
}

/** A line from each corner of the meshes along its normal. */
export class NormalLines {
  private lines: { mesh: Mesh; segments: LineSegments<BufferGeometry> }[] = [];
  private readonly material = new LineBasicMaterial({ color: 0x2fa866 });

  constructor(
    private readonly meshes: readonly Mesh[],
    private readonly size: number,
  ) {}

  show(on: boolean): void {
    for (const { segments } of this.lines) {
      segments.removeFromParent();
      segments.geometry.dispose();
    }
    this.lines = [];
    if (!on) {
      return;
    }
    for (const mesh of this.meshes) {
      const normals = mesh.geometry.getAttribute("normal");
      if (!normals || mesh.layers.isEnabled(hiddenLayer)) {
        continue;
      }
      const geometry = new BufferGeometry();
      geometry.setAttribute("position", new BufferAttribute(new Float32Array(normals.count * 6), 3));
      const segments = new LineSegments(geometry, this.material);
      segments.frustumCulled = false;
      segments.raycast = () => {};
      mesh.add(segments);
      this.lines.push({ mesh, segments });
      this.place(mesh, geometry);
    }
  }

  /** Follows the joints of meshes that stretch; the others' lines move with them. */
  update(): void {
    for (const { mesh, segments } of this.lines) {
      if (mesh instanceof SkinnedMesh) {
        this.place(mesh, segments.geometry);
      }
    }
  }

  private place(mesh: Mesh, geometry: BufferGeometry): void {
    const normals = mesh.geometry.getAttribute("normal");
    const lines = geometry.getAttribute("position");
    const from = new Vector3();
    const to = new Vector3();
    for (let i = 0; i < normals.count; ++i) {
      from.fromBufferAttribute(mesh.geometry.getAttribute("position"), i);
      to.fromBufferAttribute(normals, i).add(from);
      if (mesh instanceof SkinnedMesh) {
        mesh.applyBoneTransform(i, from);
        mesh.applyBoneTransform(i, to);
      }
      to.sub(from).setLength(this.size).add(from);
      lines.setXYZ(2 * i, from.x, from.y, from.z);
      lines.setXYZ(2 * i + 1, to.x, to.y, to.z);
    }
    lines.needsUpdate = true;
  }
}
