// The script of a review's page: it narrows, opens and copies what stands there, and keeps its state in the address.
"use strict";
(() => {
  const all = (selector, root = document) => [...root.querySelectorAll(selector)];
  const search = document.querySelector("input[type=search]");
  const status = document.querySelector("[role=status]");
  const boxes = all("[data-filter]");
  const dimensions = [...new Set(boxes.map((box) => box.dataset.filter))];

  // A bit for each value of each filter: an item has those of its own, a choice those that it lets through.
  const bitOf = Object.fromEntries(dimensions.map((name) => [name, {}]));
  boxes.forEach(({ dataset: { filter }, value }) => { bitOf[filter][value] = 1 << Object.keys(bitOf[filter]).length; });
  const bits = (name, words) => (words ? words.split(" ") : []).reduce((sum, word) => sum | (bitOf[name][word] ?? 0), 0);
  const fold = (text) => text.toLowerCase().toUpperCase();  // by way of both, so that one letter has one form

  const attribute = (element, name, otherwise) => element.getAttribute("data-" + name) ?? otherwise;
  const groups = all(".group").map((element) => {
    const own = element.dataset;
    const items = [...(element.querySelector(".rows")?.children ?? [])].map((row) => ({
      element: row, text: null, shown: true,
      kind: bitOf.kind[own.kind], change: bitOf.change[own.change],
      area: bits("area", attribute(row, "area", own.area)),
      status: bits("status", attribute(row, "status", "open")),
      requirement: bits("requirement", attribute(row, "requirement", "")),
    }));
    const note = document.createElement("span");
    element.querySelector("summary").append(" ", note);
    return { element, items, note, count: 0, equipped: false, wasOpen: false };
  });
  const findings = all(".findings > li").map((element) => ({
    element, text: null, shown: true,
    status: bits("status", element.dataset.status), requirement: bits("requirement", element.dataset.requirement),
  }));
  const others = all("#gaps tbody tr, .entries > li").map((element) => ({ element, text: null, shown: true }));
  const headings = all("main h3, main h4").filter((heading) => !heading.parentElement.matches(".part") || heading.tagName === "H4");
  const leftOut = document.querySelector("main").dataset.leftOut;
  const total = groups.reduce((sum, group) => sum + group.items.length, 0);

  // Each choice tells how many changes it would let through alone.
  const tally = Object.fromEntries(dimensions.map((name) => [name, []]));
  for (const { items } of groups) {
    for (const item of items) for (const name of dimensions) tally[name][item[name]] = (tally[name][item[name]] ?? 0) + 1;
  }
  for (const box of boxes) {
    const { filter } = box.dataset;
    const count = document.createElement("small");
    count.textContent = tally[filter].reduce((sum, number, own) => sum + (own & bitOf[filter][box.value] ? number : 0), 0);
    box.parentElement.append(" ", count);
  }

  const textOf = (item) => (item.text ??= fold(item.element.textContent));
  const show = (item, shown) => {
    if (item.shown === shown) return;
    item.shown = shown;
    item.element.hidden = !shown;
  };
  const plural = (count, word) => count + " " + word + (count === 1 ? "" : "s");

  const FEW = 1000;
  let narrowed = false;
  const apply = () => {
    const wanted = fold(search.value);
    const chosen = Object.fromEntries(dimensions.map((name) => [name, 0]));
    boxes.forEach((box) => { if (box.checked) chosen[box.dataset.filter] |= bitOf[box.dataset.filter][box.value]; });
    const used = dimensions.filter((name) => chosen[name] !== 0);
    const isNarrow = wanted !== "" || used.length !== 0;
    const passes = (item, names) => {
      for (const name of names) if ((item[name] & chosen[name]) === 0) return false;
      return wanted === "" || textOf(item).includes(wanted);
    };

    let remaining = 0;
    for (const group of groups) {
      let count = 0;
      for (const item of group.items) {
        const shown = passes(item, used);
        show(item, shown);
        if (shown) ++count;
      }
      remaining += count;
      group.count = count;
      if (isNarrow && !narrowed) group.wasOpen = group.element.open;
      group.element.hidden = isNarrow && count === 0;
      group.note.textContent = isNarrow && count !== group.items.length ? "(" + count + " remain)" : "";
    }
    // What remains is shown where it can be looked through; of more, each group tells how many it has.
    for (const group of groups) {
      if (isNarrow) group.element.open = remaining <= FEW ? group.count !== 0 : group.wasOpen;
      else if (narrowed) group.element.open = group.wasOpen;
    }
    const ofFindings = used.filter((name) => name === "status" || name === "requirement");
    let findingCount = 0;
    for (const finding of findings) {
      const shown = passes(finding, ofFindings);
      show(finding, shown);
      if (shown) ++findingCount;
    }
    for (const item of others) show(item, passes(item, []));
    // A heading goes with the last of what stands below it.
    for (const heading of headings) {
      let isEmpty = true;
      for (let next = heading.nextElementSibling; next && !/^H[1-4]$/.test(next.tagName); next = next.nextElementSibling) {
        if (!next.hidden && next.matches(".group, :has(> li:not([hidden]))")) isEmpty = false;
      }
      heading.hidden = isNarrow && isEmpty;
    }
    narrowed = isNarrow;
    status.textContent = remaining + " of " + plural(total, "change") + ", " + findingCount + " of " +
      plural(findings.length, "finding") + (leftOut === "0" ? "" : "; " + leftOut + " left out of this page");
  };

  // The address: what it says of search and filters, beside what others put there, and beside its link.
  const readAddress = () => {
    const address = new URLSearchParams(location.search);
    search.value = address.get("q") ?? "";
    for (const box of boxes) box.checked = (address.get(box.dataset.filter) ?? "").split(",").includes(box.value);
  };
  const writeAddress = () => {
    const address = new URLSearchParams(location.search);
    const put = (name, value) => (value === "" ? address.delete(name) : address.set(name, value));
    put("q", search.value);
    for (const name of dimensions) {
      put(name, boxes.filter((box) => box.dataset.filter === name && box.checked).map((box) => box.value).join(","));
    }
    const query = address.toString().replaceAll("%2C", ",");
    try {
      history.replaceState(null, "", location.pathname + (query === "" ? "" : "?" + query) + location.hash);
    } catch { /* a page in a sandbox has no address of its own */ }
  };
  let timer = 0;
  const changed = () => {
    apply();
    clearTimeout(timer);
    timer = setTimeout(writeAddress, 120);
  };
  const reset = () => {
    search.value = "";
    boxes.forEach((box) => { box.checked = false; });
    changed();
  };

  // A link to a change or finding opens what it lies in, and takes back what hides it.
  const target = () => (/^#[cf]\d{1,10}$/.test(location.hash) ? document.getElementById(location.hash.slice(1)) : null);
  const follow = (isAsked) => {
    const element = target();
    if (!element) return;
    if (element.hidden && isAsked) reset();
    for (let parent = element; parent; parent = parent.parentElement) {
      if (parent.matches("details")) parent.open = true;
    }
    element.scrollIntoView({ block: "center" });
  };

  // A path as it is: a mark stands for its character.
  const pathOf = (row) => {
    let path = "";
    const walker = document.createTreeWalker(row.querySelector("code"), NodeFilter.SHOW_TEXT);
    while (walker.nextNode()) {
      const { data, parentElement } = walker.currentNode;
      path += parentElement.matches("mark") ? String.fromCodePoint(parseInt(data.slice(2), 16)) : data;
    }
    return path;
  };
  const copyByHand = (text) => {
    const area = document.createElement("textarea");
    area.className = "away";
    area.value = text;
    document.body.append(area);
    area.select();
    const isDone = document.execCommand("copy");
    area.remove();
    return isDone;
  };
  const copy = async (button) => {
    const path = pathOf(button.closest("li"));
    let isDone = true;
    try {
      await navigator.clipboard.writeText(path);
    } catch {
      isDone = copyByHand(path);
      button.focus();
    }
    button.textContent = isDone ? "Copied" : "Not copied";
    setTimeout(() => { button.textContent = "Copy"; }, 1500);
  };
  const pattern = document.createElement("button");
  pattern.type = "button";
  pattern.dataset.action = "copy";
  pattern.textContent = "Copy";
  pattern.title = "Copy the path";
  const equip = (group) => {
    if (group.equipped) return;
    group.equipped = true;
    for (const item of group.items) {
      textOf(item);  // before the button is part of it
      item.element.firstChild.after(pattern.cloneNode(true));
    }
  };

  const openAll = (open) => all("main details").forEach((details) => { details.open = open; });
  const actions = { "open-all": () => openAll(true), "close-all": () => openAll(false), reset, copy };
  document.addEventListener("click", (event) => {
    const button = event.target.closest("button[data-action]");
    if (button) actions[button.dataset.action]?.(button);
    const link = event.target.closest("a[href^='#']");
    if (link && link.getAttribute("href") === location.hash) follow(true);
  });
  document.addEventListener("keydown", (event) => {
    if (event.key === "/" && !event.ctrlKey && !event.metaKey && !event.altKey && !event.target.matches("input")) {
      event.preventDefault();
      search.focus();
    }
  });
  search.addEventListener("input", changed);
  boxes.forEach((box) => box.addEventListener("change", changed));
  addEventListener("hashchange", () => follow(true));
  addEventListener("popstate", () => { readAddress(); apply(); });
  for (const group of groups) group.element.addEventListener("toggle", () => { if (group.element.open) equip(group); });

  // On paper all groups are open.
  let opened = [];
  addEventListener("beforeprint", () => {
    opened = all("main details:not([open])");
    opened.forEach((details) => { details.open = true; });
  });
  addEventListener("afterprint", () => opened.forEach((details) => { details.open = false; }));

  all(".bar, .filters").forEach((element) => { element.hidden = false; });
  readAddress();
  apply();
  follow(false);
  // The rest of the work is done group by group while nobody waits.
  const waiting = [...groups];
  const work = () => {
    const group = waiting.shift();
    if (!group) return;
    equip(group);
    setTimeout(work);
  };
  setTimeout(work);
})();
