// SPDX-License-Identifier: MIT
// The 3-D view: blocks of heights as corners of a mesh, lit from the viewer's left, without
// perspective, so that equal lengths look equal.
import {drawOnDemand, onDrag, onKeys, onWheel} from "./drawing.mjs";
import {largeFor} from "./grid.mjs";
import {autoStretch, blocksOf, fitFor, makeMesh, meshText, turnMatrix} from "./mesh.mjs";

const CORNERS = 250000;      // more would turn too slowly
const CORNERS_MOVED = 16000;  // while the view is turned
const STILL = 200;           // ms after which all corners are drawn again

const VERTEX_SHADER = `#version 300 es
in vec3 place;
uniform mat3 turn;
uniform vec3 size;
uniform vec2 heights;
uniform float dotSize;
out vec3 turned;
out float part;
void main() {
  turned = turn * (place * vec3(1.0, 1.0, size.z));
  part = heights.y > heights.x ? (place.z - heights.x) / (heights.y - heights.x) : 0.5;
  gl_Position = vec4(turned.xy * size.xy, -turned.z / (2.0 * max(size.z, 1.0)), 1.0);
  gl_PointSize = dotSize;
}`;

const FRAGMENT_SHADER = `#version 300 es
precision highp float;
in vec3 turned;
in float part;
uniform sampler2D palette;
uniform float lit;
uniform vec3 below;
uniform vec3 above;
out vec4 colour;
void main() {
  vec3 normal = cross(dFdx(turned), dFdy(turned));
  float length = length(normal);
  float light = length > 0.0 ? abs(dot(normal / length, normalize(vec3(-0.4, 0.5, 0.8)))) : 1.0;
  vec3 own = texture(palette, vec2((clamp(part, 0.0, 1.0) * 255.0 + 0.5) / 256.0, 0.5)).rgb;
  own = part < -1e-4 ? below : part > 1.0001 ? above : own;
  colour = vec4(own * mix(1.0, 0.35 + 0.65 * light, lit), 1.0);
}`;

export class SolidView {
  // `colours`: the palette, and the colours below and above a range.
  constructor(canvas, text, colours) {
    this.canvas = canvas;
    this.colours = colours;
    this.text = text;
    this.stretchChoice = 0;  // how many times larger heights are drawn; 0 to fit
    this.reset();
    this.gl = canvas.getContext("webgl2", {antialias: true});
    if (!this.gl || !this.build()) {
      this.gl = null;
      canvas.parentElement.hidden = true;
      canvas.closest("section").querySelector(".tools").hidden = true;
      text.textContent = "The 3-D view needs WebGL 2, which this browser does not offer.";
      return;
    }
    this.demand = drawOnDemand(canvas, () => this.draw());
    this.listen();
  }

  listen() {
    onDrag(this.canvas, {
      move: (dx, dy) => this.turn(-dx / 150, -dy / 150),
      pinch: (factor) => this.zoomBy(factor),
    });
    onWheel(this.canvas, (factor) => this.zoomBy(factor));
    onKeys(this.canvas, (key, by) => {
      const angle = by * Math.PI / 36;
      if (key === "ArrowLeft") this.turn(angle, 0);
      else if (key === "ArrowRight") this.turn(-angle, 0);
      else if (key === "ArrowUp") this.turn(0, angle);
      else if (key === "ArrowDown") this.turn(0, -angle);
      else if (key === "+" || key === "=") this.zoomBy(1.25);
      else if (key === "-") this.zoomBy(1 / 1.25);
      else if (key === "0") this.turnBack();
      else return false;
      return true;
    });
    // A driver may take the context away; the view comes back with it.
    this.canvas.addEventListener("webglcontextlost", (event) => event.preventDefault());
    this.canvas.addEventListener("webglcontextrestored", () => {
      this.build();
      if (this.scan) this.show(this.scan, this.blocks, this.range);
    });
  }

  reset() {
    this.heading = 0.45;  // around z
    this.tilt = 0.95;     // from above, 0, to the side
    this.zoom = 1;
  }
  turnBack() {
    this.reset();
    this.demand();
  }
  turn(heading, tilt) {
    this.heading += heading;
    this.tilt = Math.min(Math.max(this.tilt + tilt, 0), Math.PI);
    this.move();
  }
  zoomBy(factor) {
    this.zoom = Math.min(Math.max(this.zoom * factor, 0.5), 50);
    this.move();
  }
  // Fewer corners while the view moves.
  move() {
    this.moving = true;
    clearTimeout(this.rest);
    this.rest = setTimeout(() => {
      this.moving = false;
      this.demand();
    }, STILL);
    this.demand();
  }
  stretch(factor) {
    this.stretchChoice = factor;
    this.tell();
    this.demand();
  }
  get stretchNow() { return this.stretchChoice || autoStretch(this.scan, this.range); }
  tell() {
    if (this.scan) this.text.textContent = meshText(this.scan, this.sizes[0], this.stretchNow);
  }

  build() {
    const {gl} = this;
    const program = gl.createProgram();
    for (const [type, source] of [[gl.VERTEX_SHADER, VERTEX_SHADER],
      [gl.FRAGMENT_SHADER, FRAGMENT_SHADER]]) {
      const shader = gl.createShader(type);
      gl.shaderSource(shader, source);
      gl.compileShader(shader);
      gl.attachShader(program, shader);
    }
    gl.linkProgram(program);
    if (!gl.getProgramParameter(program, gl.LINK_STATUS)) return false;
    gl.useProgram(program);
    this.uniform = (name) => gl.getUniformLocation(program, name);
    gl.bindTexture(gl.TEXTURE_2D, gl.createTexture());
    gl.pixelStorei(gl.UNPACK_ALIGNMENT, 1);
    gl.texImage2D(gl.TEXTURE_2D, 0, gl.RGB, 256, 1, 0, gl.RGB, gl.UNSIGNED_BYTE,
      this.colours.palette);
    gl.texParameteri(gl.TEXTURE_2D, gl.TEXTURE_MIN_FILTER, gl.NEAREST);
    gl.texParameteri(gl.TEXTURE_2D, gl.TEXTURE_WRAP_S, gl.CLAMP_TO_EDGE);
    for (const name of ["below", "above"]) {
      gl.uniform3fv(this.uniform(name), this.colours[name].map((part) => part / 255));
    }
    this.place = gl.getAttribLocation(program, "place");
    this.buffers = [CORNERS, CORNERS_MOVED].map(() => this.makeBuffers());
    gl.enable(gl.DEPTH_TEST);
    return true;
  }

  makeBuffers() {
    const {gl} = this;
    const buffers = {state: gl.createVertexArray(), places: gl.createBuffer(),
      corners: gl.createBuffer()};
    gl.bindVertexArray(buffers.state);
    gl.bindBuffer(gl.ARRAY_BUFFER, buffers.places);
    gl.bindBuffer(gl.ELEMENT_ARRAY_BUFFER, buffers.corners);
    gl.enableVertexAttribArray(this.place);
    gl.vertexAttribPointer(this.place, 3, gl.FLOAT, false, 0, 0);
    return buffers;
  }

  show(scan, blocks, range) {
    if (!this.gl) return;
    Object.assign(this, {scan, blocks, range});
    this.sizes = [CORNERS, CORNERS_MOVED].map((most) => blocksOf(scan, most));
    this.meshes = this.sizes.map((size, i) => this.load(size, this.buffers[i]));
    this.tell();
    this.demand();
  }

  load(size, buffers) {
    const {gl} = this;
    const {places, triangles, points, radius, middleZ, flat} =
      makeMesh(this.scan, this.blocks, size, this.range,
        largeFor(this.range, this.blocks.of(...size)));
    gl.bindVertexArray(buffers.state);
    gl.bindBuffer(gl.ARRAY_BUFFER, buffers.places);
    gl.bufferData(gl.ARRAY_BUFFER, places, gl.STATIC_DRAW);
    gl.bufferData(gl.ELEMENT_ARRAY_BUFFER, 4 * (triangles.length + points.length), gl.STATIC_DRAW);
    gl.bufferSubData(gl.ELEMENT_ARRAY_BUFFER, 0, triangles);
    gl.bufferSubData(gl.ELEMENT_ARRAY_BUFFER, 4 * triangles.length, points);
    return {state: buffers.state, triangles: triangles.length, points: points.length, radius, middleZ,
      flat};
  }

  // Other colours, while a handle is moved; `show` is to follow.
  setRange(range) {
    if (!this.gl) return;
    this.range = range;
    this.move();
  }

  draw() {
    const {gl, canvas} = this;
    const ratio = window.devicePixelRatio || 1;
    const [across, down] = [canvas.clientWidth, canvas.clientHeight].map((size) =>
      Math.max(1, Math.round(size * ratio)));
    if (canvas.width !== across || canvas.height !== down) [canvas.width, canvas.height] = [across, down];
    gl.viewport(0, 0, across, down);
    gl.clearColor(0, 0, 0, 0);
    gl.clear(gl.COLOR_BUFFER_BIT | gl.DEPTH_BUFFER_BIT);
    if (!this.meshes) return;
    const mesh = this.meshes[this.moving ? 1 : 0];
    gl.uniformMatrix3fv(this.uniform("turn"), false, turnMatrix(this.heading, this.tilt));
    const stretch = this.stretchNow;
    const zoom = this.zoom * fitFor(mesh, stretch) * Math.min(across, 1.2 * down);
    gl.uniform3f(this.uniform("size"), zoom / across, zoom / down, stretch);
    const part = (z) => (z - mesh.middleZ) / mesh.radius;
    gl.uniform2f(this.uniform("heights"), part(this.range.low), part(this.range.high));
    gl.uniform1f(this.uniform("dotSize"), (this.moving ? 3 : 2) * ratio);
    gl.bindVertexArray(mesh.state);
    gl.uniform1f(this.uniform("lit"), 1);
    gl.drawElements(gl.TRIANGLES, mesh.triangles, gl.UNSIGNED_INT, 0);
    gl.uniform1f(this.uniform("lit"), 0);
    gl.drawElements(gl.POINTS, mesh.points, gl.UNSIGNED_INT, 4 * mesh.triangles);
  }
}
