// SPDX-License-Identifier: MIT
// The 3-D view: the map's cells as corners of a mesh, lit from the viewer's left, without
// perspective, so that equal lengths look equal.
import {drawOnDemand, onDrag, onKeys, onWheel} from "./drawing.mjs";
import {makeMesh, meshText, strideOf, turnMatrix} from "./mesh.mjs";

const VERTEX_SHADER = `#version 300 es
in vec3 place;
uniform mat3 turn;
uniform vec3 size;
uniform vec2 heights;
out vec3 turned;
out float part;
void main() {
  turned = turn * (place * vec3(1.0, 1.0, size.z));
  part = heights.y > heights.x ? (place.z - heights.x) / (heights.y - heights.x) : 0.5;
  gl_Position = vec4(turned.xy * size.xy, -turned.z / (2.0 * size.z), 1.0);
  gl_PointSize = 2.0;
}`;

const FRAGMENT_SHADER = `#version 300 es
precision highp float;
in vec3 turned;
in float part;
uniform sampler2D palette;
uniform float lit;
out vec4 colour;
void main() {
  vec3 normal = cross(dFdx(turned), dFdy(turned));
  float length = length(normal);
  float light = length > 0.0 ? abs(dot(normal / length, normalize(vec3(-0.4, 0.5, 0.8)))) : 1.0;
  vec3 own = texture(palette, vec2((clamp(part, 0.0, 1.0) * 255.0 + 0.5) / 256.0, 0.5)).rgb;
  colour = vec4(own * mix(1.0, 0.35 + 0.65 * light, lit), 1.0);
}`;

export class SolidView {
  constructor(canvas, text, palette) {
    this.canvas = canvas;
    this.palette = palette;
    this.text = text;
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
    onDrag(this.canvas, {move: (dx, dy) => this.turn(-dx / 150, -dy / 150)});
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
      if (this.scan) this.show(this.scan, this.range);
    });
  }

  reset() {
    this.heading = 0.45;  // around z
    this.tilt = 0.95;     // from above, 0, to the side
    this.zoom = 1.2;
  }
  turnBack() {
    this.reset();
    this.demand();
  }
  turn(heading, tilt) {
    this.heading += heading;
    this.tilt = Math.min(Math.max(this.tilt + tilt, 0), Math.PI);
    this.demand();
  }
  zoomBy(factor) {
    this.zoom = Math.min(Math.max(this.zoom * factor, 0.5), 50);
    this.demand();
  }
  stretch(factor) {
    this.heightFactor = factor;
    this.demand();
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
    gl.texImage2D(gl.TEXTURE_2D, 0, gl.RGB, 256, 1, 0, gl.RGB, gl.UNSIGNED_BYTE, this.palette);
    gl.texParameteri(gl.TEXTURE_2D, gl.TEXTURE_MIN_FILTER, gl.NEAREST);
    gl.texParameteri(gl.TEXTURE_2D, gl.TEXTURE_WRAP_S, gl.CLAMP_TO_EDGE);
    gl.bindBuffer(gl.ARRAY_BUFFER, gl.createBuffer());
    gl.bindBuffer(gl.ELEMENT_ARRAY_BUFFER, gl.createBuffer());
    const place = gl.getAttribLocation(program, "place");
    gl.enableVertexAttribArray(place);
    gl.vertexAttribPointer(place, 3, gl.FLOAT, false, 0, 0);
    gl.enable(gl.DEPTH_TEST);
    return true;
  }

  show(scan, range) {
    if (!this.gl) return;
    const {gl} = this;
    this.scan = scan;
    this.range = range;
    const stride = strideOf(scan);
    this.mesh = makeMesh(scan, stride);
    gl.bufferData(gl.ARRAY_BUFFER, this.mesh.places, gl.STATIC_DRAW);
    gl.bufferData(gl.ELEMENT_ARRAY_BUFFER,
      Uint32Array.from(this.mesh.triangles.concat(this.mesh.points)), gl.STATIC_DRAW);
    this.text.textContent = meshText(scan, stride);
    this.demand();
  }

  draw() {
    const {gl, canvas, mesh} = this;
    const ratio = window.devicePixelRatio || 1;
    canvas.width = Math.max(1, Math.round(canvas.clientWidth * ratio));
    canvas.height = Math.max(1, Math.round(canvas.clientHeight * ratio));
    gl.viewport(0, 0, canvas.width, canvas.height);
    gl.clearColor(0, 0, 0, 0);
    gl.clear(gl.COLOR_BUFFER_BIT | gl.DEPTH_BUFFER_BIT);
    if (!mesh) return;
    gl.uniformMatrix3fv(this.uniform("turn"), false, turnMatrix(this.heading, this.tilt));
    const zoom = this.zoom * Math.min(canvas.width, canvas.height);
    const stretch = this.heightFactor || 1;
    gl.uniform3f(this.uniform("size"), zoom / canvas.width, zoom / canvas.height, stretch);
    const part = (z) => (z - mesh.middleZ) / mesh.radius;
    gl.uniform2f(this.uniform("heights"), part(this.range.low), part(this.range.high));
    gl.uniform1f(this.uniform("lit"), 1);
    gl.drawElements(gl.TRIANGLES, mesh.triangles.length, gl.UNSIGNED_INT, 0);
    gl.uniform1f(this.uniform("lit"), 0);
    gl.drawElements(gl.POINTS, mesh.points.length, gl.UNSIGNED_INT, 4 * mesh.triangles.length);
  }
}
