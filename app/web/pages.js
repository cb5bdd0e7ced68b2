// SPDX-License-Identifier: MIT
// Copyright (c) 2026 the Wren developers
//
// The page of halftones: scales a document to the head, posts its grey levels, shows the answer.
"use strict";

const form = document.getElementById("halftone");

function startHalftones() {
  const width = Number(form.dataset.width);
  const words = JSON.parse(form.dataset.words);
  const cards = [...form.querySelectorAll(".card")];
  const find = (selector) => form.querySelector(selector);
  const said = document.getElementById("said");
  const wrong = document.getElementById("wrong");
  let source = null; // {heights, levels}
  let shown = null; // {source, tone, methods} of the pictures on the page
  let isDrawing = false;
  let isStale = false;

  const say = (text) => { said.textContent = text; };
  const complain = (text) => {
    wrong.textContent = text;
    wrong.hidden = !text;
    if (text) say("");
  };
  const tone = () => ({
    brightness: form.elements.brightness.value,
    contrast: form.elements.contrast.value,
  });
  const filled = (text, values) => text.replace(/\{(\w+)\}/g, (all, name) => values[name] ?? all);

  // A first line of fields with the token, and bytes. Throws an Error with words for people.
  async function post(page, fields, bytes) {
    const line = new URLSearchParams({session: form.elements.session.value, ...fields});
    let answer;
    try {
      answer = await fetch(`${form.getAttribute("action")}/${page}`, {
        method: "POST",
        headers: {"Content-Type": "application/octet-stream"},
        body: new Blob([`${line}\n`, bytes]),
      });
    } catch {
      throw new Error(words.lost);
    }
    const type = answer.headers.get("Content-Type") || "";
    if (type.startsWith("text/html")) location.reload(); // the password is asked for again
    if (type.startsWith("application/json")) {
      const json = await answer.json();
      if (json.error) throw Object.assign(new Error(json.error), {status: answer.status});
      return {json};
    }
    if (!answer.ok) throw new Error(words.lost);
    const all = new Uint8Array(await answer.arrayBuffer());
    const end = all.indexOf(10);
    return {
      json: JSON.parse(new TextDecoder().decode(all.subarray(0, end))),
      bytes: all.subarray(end + 1),
    };
  }

  // The luma of BT.601 on white paper, as in the documents of a job.
  async function readPicture(file) {
    let picture;
    try {
      picture = await createImageBitmap(file);
    } catch {
      throw new Error(words.unreadable);
    }
    const height = Math.max(1, Math.round(picture.height * width / picture.width));
    if (height > Number(form.dataset.maxRows)) throw new Error(words.long);
    const canvas = document.createElement("canvas");
    canvas.width = width;
    canvas.height = height;
    const context = canvas.getContext("2d", {willReadFrequently: true});
    context.fillStyle = "#fff";
    context.fillRect(0, 0, width, height);
    context.imageSmoothingQuality = "high";
    context.drawImage(picture, 0, 0, width, height);
    const {data} = context.getImageData(0, 0, width, height);
    const levels = new Uint8Array(width * height);
    for (let i = 0; i < levels.length; ++i) {
      levels[i] = Math.round(0.299 * data[4 * i] + 0.587 * data[4 * i + 1] + 0.114 * data[4 * i + 2]);
    }
    return {heights: [height], levels};
  }

  async function readPdf(file) {
    if (file.size > Number(form.dataset.maxPdf)) throw new Error(words.largePdf);
    const {json, bytes} = await post("pdf", {}, file);
    return {heights: json.heights, levels: bytes};
  }

  async function open(file) {
    complain("");
    say(words.reading);
    try {
      const isPdf = file.type === "application/pdf" || /\.pdf$/i.test(file.name || "");
      source = await (isPdf ? readPdf(file) : readPicture(file));
      redraw();
    } catch (error) {
      complain(error.message);
    }
  }

  function show(card, method, png) {
    const view = card.querySelector(".view");
    const picture = view.querySelector("img");
    const facts = card.querySelector(".facts");
    if (picture.src) URL.revokeObjectURL(picture.src);
    picture.src = URL.createObjectURL(new Blob([png], {type: "image/png"}));
    picture.alt = filled(words.shown, {method: card.querySelector("h2").textContent});
    facts.textContent = filled(words.facts, method);
    view.classList.add(`w${width}`);
    view.hidden = facts.hidden = card.querySelector(".print").hidden = false;
  }

  // One request at a time; what changes meanwhile is drawn by the next one.
  async function redraw() {
    isStale = true;
    if (isDrawing || !source) return;
    isDrawing = true;
    say(words.drawing);
    while (isStale) {
      isStale = false;
      const asked = {source, tone: tone()};
      try {
        const fields = {...asked.tone, heights: source.heights.join()};
        const {json, bytes} = await post("preview", fields, source.levels);
        let at = 0;
        for (const method of json.methods) {
          const card = cards.find((one) => one.dataset.method === method.method);
          show(card, method, bytes.subarray(at, at += method.png));
        }
        shown = {...asked, methods: json.methods};
        find(".magnify").hidden = false;
        complain("");
        say(words.drawn);
      } catch (error) {
        complain(error.message);
      }
    }
    isDrawing = false;
    form.dataset.drawn = Number(form.dataset.drawn || 0) + 1;
  }

  async function print(name) {
    const method = shown.methods.find((one) => one.method === name);
    const fields = {
      ...shown.tone,
      heights: shown.source.heights.join(),
      "halftone-type": name,
      digest: method.digest,
    };
    complain("");
    say(words.printing);
    try {
      const {json} = await post("print", fields, shown.source.levels);
      say(filled(words.printed, json));
    } catch (error) {
      complain(error.message);
      if (error.status === 409) redraw();
    }
  }

  // As the form does without a script, but the pictures stay.
  async function makeDefault(name) {
    const fields = new URLSearchParams({...tone(), "halftone-type": name, session: form.elements.session.value});
    try {
      const answer = await fetch(form.getAttribute("action"), {
        method: "POST",
        // PAPPL reads no form whose type has a character set behind it.
        headers: {"Content-Type": "application/x-www-form-urlencoded"},
        body: fields.toString(),
        redirect: "manual",
      });
      // The redirection is the server's way to say that it is done.
      if (answer.type !== "opaqueredirect") throw new Error(words.lost);
      for (const card of cards) mark(card, card.dataset.method === name);
      complain("");
      say(words.saved);
    } catch {
      complain(words.lost);
    }
  }

  function mark(card, isChosen) {
    card.querySelector(".mark").hidden = !isChosen;
    card.classList.toggle("chosen", isChosen);
  }

  // All nine show the same place of the paper.
  function follow(event) {
    if (!find(".cards").classList.contains("magnified")) return;
    for (const view of form.querySelectorAll(".view")) {
      view.scrollLeft = event.target.scrollLeft;
      view.scrollTop = event.target.scrollTop;
    }
  }

  function magnify(isOn, view, x, y) {
    find(".magnify input").checked = isOn;
    find(".cards").classList.toggle("magnified", isOn);
    if (!isOn || !view) return;
    const picture = view.querySelector("img");
    view.scrollLeft = x * picture.clientWidth - view.clientWidth / 2;
    view.scrollTop = y * picture.clientHeight - view.clientHeight / 2;
  }

  for (const card of cards) {
    const view = card.querySelector(".view");
    mark(card, !card.querySelector(".mark").hidden);
    card.querySelector(".print").addEventListener("click", () => print(card.dataset.method));
    view.addEventListener("scroll", follow);
    view.addEventListener("click", (event) => {
      const isOn = !find(".magnify input").checked;
      const box = view.querySelector("img").getBoundingClientRect();
      magnify(isOn, view, (event.clientX - box.left) / box.width, (event.clientY - box.top) / box.height);
    });
  }
  for (const slider of form.querySelectorAll("input[type=range]")) {
    slider.addEventListener("input", () => {
      slider.parentElement.querySelector("output").textContent = slider.value;
      redraw();
    });
  }
  for (const button of form.querySelectorAll("[data-example]")) {
    button.addEventListener("click", async () => {
      try {
        open(await (await fetch(button.dataset.example)).blob());
      } catch {
        complain(words.lost);
      }
    });
  }
  find("input[type=file]").addEventListener("change", (event) => {
    if (event.target.files[0]) open(event.target.files[0]);
  });
  find(".magnify input").addEventListener("change", (event) => magnify(event.target.checked));
  form.addEventListener("submit", (event) => {
    event.preventDefault();
    if (event.submitter) makeDefault(event.submitter.value);
  });
  find(".source").hidden = false;
}

if (form) startHalftones();
