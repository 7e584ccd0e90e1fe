// SPDX-License-Identifier: MIT
// A profile as a plot, and the distance between two of its points.

class ProfileView {
  constructor() {
    const stage = byId("profile-plot");
    this.plot = new LinePlot(stage, {
      label: "Profile. Left and right move the readout.",
      xName: "x",
      onCursor: (index, byKey) => this.tellPoint(index, byKey),
      onView: () => this.placeMarks(),
    });
    this.marks = [0, 0];
    this.handles = ["A", "B"].map((name, end) => this.makeHandle(stage, name, end));
    onKeys(this.plot.canvas, (key) => {
      const end = "ab".indexOf(key.toLowerCase());
      if (end < 0) return false;
      this.moveMark(end, this.plot.index);
      return true;
    });
  }

  makeHandle(stage, name, end) {
    const handle = element("button", "handle", name);
    handle.type = "button";
    onDrag(handle, {
      move: (dx, dy, event) =>
        this.moveMark(end, this.plot.nearest(pointIn(this.plot.canvas, event).x)),
    });
    onKeys(handle, (key, by) => {
      const index = this.plot.step(this.marks[end], key, by);
      if (index < 0) return false;
      this.moveMark(end, index);
      speak(this.pairsOf(index));
      return true;
    });
    stage.append(handle);
    return handle;
  }

  show(scan) {
    const same = this.scan && this.scan.raw.length === scan.raw.length;
    this.scan = scan;
    const heights = Float64Array.from(scan.order, (point) => scan.z(point));
    if (!same) {
      const valid = [...heights.keys()].filter((i) => !Number.isNaN(heights[i]));
      this.marks = [valid[0] ?? 0, valid[valid.length - 1] ?? 0];
      this.plot.index = heights.length >> 1;
    }
    this.plot.show({x: scan.xs, z: heights}, same);
    this.tellDistance();
  }

  pairsOf(index) {
    const {scan, plot} = this;
    const pairs = [
      ["x", mm(plot.points.x[index], scan.placeDecimals)],
      ["z", mm(plot.points.z[index], scan.decimals)],
    ];
    if (scan.bytes) pairs.push(["intensity", String(scan.bytes[scan.order[index]])]);
    pairs.push(["point", String(scan.order[index])]);
    return pairs;
  }

  tellPoint(index, byKey) {
    if (this.scan.raw.length === 0) return;
    const pairs = this.pairsOf(index);
    showPairs(byId("profile-readout"), pairs);
    if (byKey) speak(pairs);
  }

  moveMark(end, index) {
    if (index < 0) return;
    this.marks[end] = index;
    this.plot.demand();
    this.tellDistance();
  }

  tellDistance() {
    const {x, z} = this.plot.points;
    const [a, b] = this.marks;
    const dx = x[b] - x[a];
    const dz = z[b] - z[a];
    showPairs(byId("profile-facts"), [
      ["distance", Number.isNaN(dz) ? "an end is not measured" : mm(Math.hypot(dx, dz), 4)],
      ["along x", mm(dx, 4)],
      ["height difference B − A", Number.isNaN(dz) ? "an end is not measured"
        : mm(dz, this.scan.decimals)],
    ]);
  }

  placeMarks() {
    this.marks.forEach((index, end) => {
      const {x, z} = this.plot.points;
      const bottom = this.plot.canvas.clientHeight - MARGIN.bottom;
      const place = this.plot.toScreenX(x[index]);
      placeAt(this.handles[end], place, Number.isNaN(z[index]) ? bottom
        : this.plot.toScreenZ(z[index]), this.plot.canvas);
      this.handles[end].hidden ||= place < MARGIN.left - 1;
      const text = this.pairsOf(index).map((pair) => pair.join(" ")).join(", ");
      this.handles[end].setAttribute("aria-label", `End ${"AB"[end]}: ${text}`);
    });
  }
}
