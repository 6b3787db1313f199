
"use strict";
// A viewer shows two layers, before over after. The layers share a place and a scale, and the upper one is cut at
// the slider, so that both pictures always lie over each other.

const clamp = (value, low, high) => Math.min(Math.max(value, low), high);

function element(name, attributes, ...children) {
  const made = document.createElement(name);
  for (const [key, value] of Object.entries(attributes)) made.setAttribute(key, value);
  made.append(...children);
  return made;
}

class Viewer {
  constructor(box) {
    this.box = box;
    // Places are in pixels of the whole picture. The centre is there where the whole is only an overview.
    const [width, height] = box.dataset.size.split(" ").map(Number);
    this.whole = {x: 0, y: 0, width, height, images: box.querySelectorAll(".whole")};
    this.detail = this.whole;
    if (box.dataset.centre) {
      const [x, y, w, h] = box.dataset.centre.split(" ").map(Number);
      this.detail = {x, y, width: w, height: h, images: box.querySelectorAll(".centre")};
    }
    this.zoomed = false;
    this.share = 50;  // of the visible picture, that is shown as before: percent
    this.at = {x: width / 2, y: height / 2};  // in the middle of the box
    box.style.setProperty("--ratio", `${width} / ${height}`);
    box.style.setProperty("--height", `${height}px`);
    this.addControls();
    this.addPointer();
    new ResizeObserver(() => this.show()).observe(box);
    this.show();
  }

  addControls() {
    const name = this.box.closest("section").querySelector("h2").textContent;
    this.box.setAttribute("role", "group");
    this.box.setAttribute("aria-label", `Before and after: ${name}`);
    this.slider = element("div", {
      class: "slider", role: "slider", tabindex: 0, "aria-label": "Part shown before the treatment",
      "aria-orientation": "horizontal", "aria-valuemin": 0, "aria-valuemax": 100});
    this.slider.addEventListener("keydown", event => this.onSliderKey(event));
    this.box.addEventListener("keydown", event => this.onPanKey(event));
    this.box.append(this.slider);
    this.fit = element("button", {type: "button", "aria-pressed": true}, "Fit");
    this.full = element("button", {type: "button", "aria-pressed": false}, "100\u00a0%");
    this.fit.addEventListener("click", () => this.zoom(false));
    this.full.addEventListener("click", () => this.zoom(true));
    this.scaleText = element("output", {});
    this.box.after(element("div", {class: "zoom"}, this.scaleText,
      element("div", {class: "choice", role: "group", "aria-label": "Size"}, this.fit, this.full)));
  }

  get shown() { return this.zoomed ? this.detail : this.whole; }

  // In CSS pixels for each of the picture: at 100 % one pixel is one of the screen.
  get scale() {
    if (this.zoomed) return 1 / devicePixelRatio;
    return Math.min(this.box.clientWidth / this.whole.width, this.box.clientHeight / this.whole.height, 1);
  }

  // Where an axis of the picture lies in the box: its start and length, in whole pixels of the screen.
  place(box, start, size, at) {
    const length = size * this.scale, free = box - length;
    const left = free >= 0 ? free / 2 : clamp(box / 2 - (at - start) * this.scale, free, 0);
    return [Math.round(left * devicePixelRatio) / devicePixelRatio, length];
  }

  show() {
    const {box, shown} = this;
    const [left, width] = this.place(box.clientWidth, shown.x, shown.width, this.at.x);
    const [top, height] = this.place(box.clientHeight, shown.y, shown.height, this.at.y);
    for (const part of new Set([this.whole, this.detail]))
      for (const image of part.images) image.hidden = part !== shown;
    for (const image of shown.images) {
      image.style.width = `${width}px`;
      image.style.height = `${height}px`;
      image.style.transform = `translate(${left}px, ${top}px)`;
    }
    this.origin = {left, top};
    const start = Math.max(left, 0), end = Math.min(left + width, box.clientWidth);
    this.visible = {start, size: end - start};
    box.style.setProperty("--start", `${start}px`);
    box.style.setProperty("--end", `${end}px`);
    box.style.setProperty("--split", `${start + this.share / 100 * (end - start)}px`);
    this.slider.setAttribute("aria-valuenow", Math.round(this.share));
    this.slider.setAttribute("aria-valuetext", `${Math.round(this.share)} % before`);
    this.scaleText.textContent = this.zoomed ? "" : `${Math.round(100 * this.scale * devicePixelRatio)}\u00a0%`;
  }

  move(share) {
    this.share = clamp(share, 0, 100);
    this.show();
  }

  // Of a place in the box, in pixels of the whole picture.
  pictureAt(x, y) {
    const {shown, origin, scale} = this;
    return {x: shown.x + (x - origin.left) / scale, y: shown.y + (y - origin.top) / scale};
  }

  // What is at (x, y) of the box stays there where it can.
  zoom(zoomed, x = this.box.clientWidth / 2, y = this.box.clientHeight / 2) {
    const under = this.pictureAt(x, y);
    this.zoomed = zoomed;
    this.box.classList.toggle("zoomed", zoomed);
    if (zoomed) this.box.setAttribute("tabindex", 0);
    else this.releaseFocus();
    this.fit.setAttribute("aria-pressed", !zoomed);
    this.full.setAttribute("aria-pressed", zoomed);
    const {box, scale} = this;
    this.pan(under.x + (box.clientWidth / 2 - x) / scale, under.y + (box.clientHeight / 2 - y) / scale);
  }

  releaseFocus() {
    if (document.activeElement === this.box) this.slider.focus({preventScroll: true});
    this.box.removeAttribute("tabindex");
  }

  pan(x, y) {
    this.at = {x, y};
    this.show();
    // What was asked for beyond the edge is not kept: the way back would begin with nothing.
    this.at = this.pictureAt(this.box.clientWidth / 2, this.box.clientHeight / 2);
  }

  onSliderKey(event) {
    const step = event.shiftKey ? 10 : 1;
    const places = {
      ArrowLeft: this.share - step, ArrowDown: this.share - step, ArrowRight: this.share + step,
      ArrowUp: this.share + step, PageDown: this.share - 10, PageUp: this.share + 10, Home: 0, End: 100};
    if (!(event.key in places) || event.ctrlKey || event.altKey || event.metaKey) return;
    event.preventDefault();
    this.move(places[event.key]);
  }

  onPanKey(event) {
    if (event.key === "Escape" && this.zoomed) return this.zoom(false);
    const step = 0.125 * Math.min(this.box.clientWidth, this.box.clientHeight) / this.scale;
    const ways = {ArrowLeft: [-1, 0], ArrowRight: [1, 0], ArrowUp: [0, -1], ArrowDown: [0, 1]};
    if (event.target !== this.box || !(event.key in ways)) return;
    event.preventDefault();
    const [x, y] = ways[event.key];
    this.pan(this.at.x + x * step, this.at.y + y * step);
  }

  addPointer() {
    this.box.addEventListener("pointerdown", event => this.onDown(event));
    this.box.addEventListener("dragstart", event => event.preventDefault());
    this.box.addEventListener("dblclick", event => {
      if (event.target === this.slider) return;
      const {left, top} = this.box.getBoundingClientRect();
      this.zoom(!this.zoomed, event.clientX - left, event.clientY - top);
    });
  }

  // On the picture the line waits until the pointer goes sideways: a finger may have come down to scroll the page.
  onDown(down) {
    if (!down.isPrimary || down.button !== 0) return;
    const onSlider = down.target === this.slider;
    const panning = this.zoomed && !onSlider;
    const from = this.at;
    const {left} = this.box.getBoundingClientRect();
    const grip = onSlider ? down.clientX - left - this.visible.start - this.share / 100 * this.visible.size : 0;
    let moving = onSlider || panning;
    const onMove = event => {
      if (event.pointerId !== down.pointerId) return;
      const {scale, visible} = this;
      const x = event.clientX - down.clientX, y = event.clientY - down.clientY;
      moving ||= Math.abs(x) > Math.max(Math.abs(y), 4);
      if (panning) this.pan(from.x - x / scale, from.y - y / scale);
      else if (moving)
        this.move(100 * (event.clientX - left - grip - visible.start) / visible.size);
    };
    const onEnd = event => {
      if (event.pointerId !== down.pointerId) return;
      removeEventListener("pointermove", onMove);
      for (const end of ["pointerup", "pointercancel"]) removeEventListener(end, onEnd);
      this.box.classList.remove("panning");
    };
    addEventListener("pointermove", onMove);
    for (const end of ["pointerup", "pointercancel"]) addEventListener(end, onEnd);
    this.box.classList.toggle("panning", panning);
    // Arrow keys go on where the pointer left off.
    (panning ? this.box : this.slider).focus({preventScroll: true});
    if (down.pointerType === "mouse") down.preventDefault();
  }
}

document.documentElement.classList.add("live");
addEventListener("DOMContentLoaded", () => {
  for (const box of document.querySelectorAll(".viewer")) new Viewer(box);
});
