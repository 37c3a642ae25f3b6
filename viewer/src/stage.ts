import {
  AmbientLight,
  Box3,
  Color,
  DirectionalLight,
  PerspectiveCamera,
  Scene,
  Vector3,
  WebGLRenderer,
} from "three";
import { OrbitControls } from "three/examples/jsm/controls/OrbitControls.js";

/** Brightness at which a surface has the colour of its material. */
const full = Math.PI;

/** The picture: camera, light and controls. It is drawn when something has changed. */
export class Stage {
  readonly scene = new Scene();
  readonly camera = new PerspectiveCamera(40, 1, 1, 10);
  readonly canvas: HTMLCanvasElement;
  /** Called before each drawing with the seconds since the last; true asks for another one. */
  beforeDraw: (seconds: number) => boolean = () => false;

  private readonly renderer: WebGLRenderer;
  private readonly controls: OrbitControls;
  private readonly ambient = new AmbientLight();
  private readonly lamp = new DirectionalLight();
  private asked = false;
  private lastDraw = 0;

  /** Throws when the browser has no WebGL. */
  constructor(private readonly place: HTMLElement) {
    this.renderer = new WebGLRenderer({ antialias: true });
    this.canvas = this.renderer.domElement;
    this.canvas.tabIndex = 0;
    this.canvas.setAttribute("role", "img");
    this.canvas.setAttribute("aria-label", "The model; arrow keys turn it");
    place.append(this.canvas);

    // From the viewer's upper left.
    this.lamp.position.set(-0.48, 0.64, 0.6);
    this.camera.add(this.lamp, this.lamp.target);
    this.scene.add(this.camera, this.ambient);
    this.setLight(true);

    this.controls = new OrbitControls(this.camera, this.canvas);
    this.controls.addEventListener("change", () => this.draw());

    const dark = matchMedia("(prefers-color-scheme: dark)");
    dark.addEventListener("change", () => this.setBackground(dark.matches));
    this.setBackground(dark.matches);
    new ResizeObserver(() => this.resize()).observe(place);
    this.resize();
  }

  setLight(on: boolean): void {
    this.lamp.intensity = on ? full : 0;
    this.ambient.intensity = on ? 0.22 * full : full;
    this.draw();
  }

  /** Asks for a drawing with the next frame of the screen. */
  draw(): void {
    if (!this.asked) {
      this.asked = true;
      requestAnimationFrame((now) => this.drawNow(now));
    }
  }

  /** Turns by angles in radians about the middle of the picture. */
  turn(right: number, up: number): void {
    const offset = this.camera.position.clone().sub(this.controls.target);
    const length = offset.length();
    const angle = Math.atan2(offset.x, offset.z) + right;
    const limit = Math.PI / 2 - 0.01;
    const height = Math.min(limit, Math.max(-limit, Math.asin(offset.y / length) + up));
    offset.set(
      length * Math.cos(height) * Math.sin(angle),
      length * Math.sin(height),
      length * Math.cos(height) * Math.cos(angle),
    );
    this.camera.position.copy(this.controls.target).add(offset);
    this.controls.update();
  }

  /** Moves the picture by parts of its height. */
  pan(right: number, up: number): void {
    const distance = this.camera.position.distanceTo(this.controls.target);
    const height = 2 * distance * Math.tan((this.camera.fov * Math.PI) / 360);
    const step = new Vector3(-right * height, -up * height, 0).applyQuaternion(this.camera.quaternion);
    this.camera.position.add(step);
    this.controls.target.add(step);
    this.controls.update();
  }

  zoom(factor: number): void {
    const offset = this.camera.position.clone().sub(this.controls.target);
    const length = offset.length() / factor;
    offset.setLength(Math.min(this.controls.maxDistance, Math.max(this.controls.minDistance, length)));
    this.camera.position.copy(this.controls.target).add(offset);
    this.controls.update();
  }

  /** Shows the whole box, from a direction or from where the camera stands. */
  fit(box: Box3, direction?: Vector3): void {
    if (box.isEmpty()) {
      return;
    }
    this.resize();
    const middle = box.getCenter(new Vector3());
    const back = (direction ?? this.camera.position.clone().sub(this.controls.target)).normalize();
    const right = new Vector3(0, 1, 0).cross(back).normalize();
    const up = new Vector3().crossVectors(back, right);
    const vertical = Math.tan((this.camera.fov * Math.PI) / 360);
    let distance = 0;
    for (let corner = 0; corner < 8; ++corner) {
      const place = new Vector3(
        corner & 1 ? box.max.x : box.min.x,
        corner & 2 ? box.max.y : box.min.y,
        corner & 4 ? box.max.z : box.min.z,
      ).sub(middle);
      const wide = Math.abs(place.dot(right)) / (vertical * this.camera.aspect);
      const high = Math.abs(place.dot(up)) / vertical;
      distance = Math.max(distance, place.dot(back) + Math.max(wide, high));
    }
    this.camera.position.copy(middle).addScaledVector(back, Math.max(1.04 * distance, this.controls.minDistance));
    this.controls.target.copy(middle);
    this.controls.update();
  }

  /** Sets how near and how far the camera may go for a model of this size. */
  setRange(radius: number): void {
    this.camera.near = radius / 200;
    this.camera.far = radius * 40;
    this.camera.updateProjectionMatrix();
    this.controls.minDistance = radius / 100;
    this.controls.maxDistance = radius * 20;
  }

  private setBackground(dark: boolean): void {
    this.scene.background = new Color(dark ? 0x1b1e23 : 0xe9ecf0);
    this.draw();
  }

  private resize(): void {
    const { clientWidth, clientHeight } = this.place;
    if (clientWidth === 0 || clientHeight === 0) {
      return;
    }
    this.renderer.setPixelRatio(Math.min(devicePixelRatio, 2));
    this.renderer.setSize(clientWidth, clientHeight);
    this.camera.aspect = clientWidth / clientHeight;
    this.camera.updateProjectionMatrix();
    this.draw();
  }

  private drawNow(now: number): void {
    this.asked = false;
    // A step after a pause would jump.
    const seconds = Math.min((now - this.lastDraw) / 1000, 0.1);
    this.lastDraw = now;
    const again = this.beforeDraw(seconds);
    this.renderer.render(this.scene, this.camera);
    document.documentElement.toggleAttribute("data-ready", true);
    if (again) {
      this.draw();
    }
  }
}
