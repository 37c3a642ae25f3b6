import "./style.css";

import { Sphere, Vector3 } from "three";

import { readData, readGlb, type ModelData } from "./data.js";
import { byId, element } from "./dom.js";
import { factsPanel } from "./facts_panel.js";
import { helpPanel } from "./help_panel.js";
import { CoordinateAxes, NormalLines } from "./helpers.js";
import { keyBindings } from "./key_bindings.js";
import { watchKeys } from "./keys.js";
import { Looks, setWireframe } from "./looks.js";
import { memoryPanel } from "./memory_panel.js";
import { boxOf, loadModel, primitiveOf, type Model } from "./model.js";
import { motionBar } from "./motion_bar.js";
import { MotionPlayer } from "./motions.js";
import { Panels } from "./panels.js";
import { Parts, partName } from "./parts.js";
import { partsPanel } from "./parts_panel.js";
import { watchClicks } from "./picking.js";
import { PolygonMark } from "./selection.js";
import { Stage } from "./stage.js";
import { Switches } from "./switches.js";

/** From the model's front, a little from its left and from above. */
const firstDirection = new Vector3(0.65, 0.45, 1);

function say(text: string): void {
  byId("status").textContent = text;
}

function fail(what: string, cause: unknown): void {
  const reason = cause instanceof Error ? cause.message : String(cause);
  byId("stage").replaceChildren(
    element("div", { class: "failure", role: "alert" }, element("h2", {}, what), element("p", {}, reason)),
  );
}

function makeStage(): Stage | null {
  try {
    return new Stage(byId("stage"));
  } catch (error) {
    fail("This browser cannot draw the model: it has no WebGL, or WebGL is turned off.", error);
    return null;
  }
}

async function makeModel(): Promise<Model | null> {
  try {
    const model = await loadModel(readGlb());
    const looks = new Looks();
    model.meshes.all().forEach((mesh) => looks.apply(mesh));
    return model;
  } catch (error) {
    fail("The model in this page cannot be read.", error);
    return null;
  }
}

function show(stage: Stage, model: Model, data: ModelData): void {
  const meshes = model.meshes.all();
  stage.scene.add(model.root);
  const whole = boxOf(meshes);
  const radius = whole.isEmpty() ? 1 : Math.max(whole.getBoundingSphere(new Sphere()).radius, 1e-3);
  stage.setRange(radius);

  const parts = new Parts(model, data);
  const fit = () => {
    const chosen = parts.selected === null ? [] : parts.meshesOf(parts.selected);
    stage.fit(boxOf(chosen.length > 0 ? chosen : parts.shownMeshes()));
  };

  const normals = new NormalLines(meshes, radius / 60);
  const axes = new CoordinateAxes(model.nodes.values(), radius / 12);
  const switches = new Switches(stage, {
    light: (on) => stage.setLight(on),
    wireframe: (on) => setWireframe(meshes, on),
    normals: (on) => normals.show(on),
    axes: (on) => axes.show(on),
  });

  let updateMotion = () => {};
  const player = new MotionPlayer(
    model.root,
    model.motions,
    data.motions,
    data.framesPerSecond,
    (coordinate) => model.nodes.get(coordinate),
    () => {
      updateMotion();
      stage.draw();
    },
  );
  updateMotion = motionBar(player, data.framesPerSecond);
  updateMotion();

  const memory = memoryPanel(data);
  const mark = new PolygonMark(data.pictures, memory);
  const tree = partsPanel(parts);
  parts.changed = () => {
    tree.update();
    if (switches.isOn("normals")) {
      normals.show(true);
    }
    stage.draw();
  };
  watchClicks(stage.canvas, stage.camera, model.root, (hit) => {
    const part = hit ? model.partOf.get(hit.mesh) ?? null : null;
    parts.select(part);
    mark.show(hit);
    say(hit && part !== null ? `${partName(part)}: ${primitiveOf(hit.mesh).form}` : "");
  });

  const bindings = keyBindings({
    stage,
    parts,
    player,
    switches,
    framesPerSecond: data.framesPerSecond,
    fit,
    look: (x, y, z) => stage.fit(boxOf(parts.shownMeshes()), new Vector3(x, y, z)),
    togglePanel: (name) => panels.toggle(name),
    leave: () => {
      if (panels.isOpen) {
        panels.close();
      } else {
        parts.select(null);
        mark.show(null);
      }
    },
  });
  const panels = new Panels({
    parts: tree.panel,
    images: memory.panel,
    facts: factsPanel(data),
    help: helpPanel(bindings),
  });
  watchKeys(bindings);
  fitButton(fit);

  stage.beforeDraw = (seconds) => {
    const again = player.advance(seconds);
    normals.update();
    return again;
  };
  stage.fit(whole, firstDirection.clone());
  stage.draw();
}

function fitButton(fit: () => void): void {
  const button = element("button", { type: "button", title: "Show all of the model (F)" }, "Fit");
  button.addEventListener("click", fit);
  byId("tools").prepend(button);
}

async function main(): Promise<void> {
  const data = readData();
  document.title = data.name;
  byId("name").textContent = data.name;
  const stage = makeStage();
  const model = stage && (await makeModel());
  if (stage && model) {
    show(stage, model, data);
  }
}

void main();
