// Shows the matrix that stands in the page. Everything was decided by the tool: this looks the
// answers up, filters rows, and draws those that are in view.
"use strict";

const data = JSON.parse(document.getElementById("data").textContent);
for (const there of data.presets.flatMap(({on}) => on).filter(Boolean)) {
    there.items = new Map(there.items);
    there.groups = new Map(there.groups);
}
const element = id => document.getElementById(id);
const frame = element("frame");
const detail = element("detail");
const margin = 10; // rows that are drawn above and below those in view

let rows = [];     // numbers of the parameters that pass the filters
let columns = [];  // numbers of the presets that are shown
let drawn = new Map(); // the rows that are in the table, by their places
let focus = {row: 0, column: 0}; // the cell that has the keyboard; column 0 is the parameter

function node(name, text = "", className = "") {
    const made = document.createElement(name);
    made.textContent = text;
    if (className)
        made.className = className;
    return made;
}

const variant = () => Number(element("variant").value);
const counted = (count, thing) => `${count} ${thing}${count === 1 ? "" : "s"}`;

// The decision about a parameter; nothing if it or the preset does not exist on the variant.
function decisionOf(parameter, preset, on) {
    const there = data.presets[preset].on[on];
    const group = data.parameters[parameter].groups[on];
    if (!there || group === null)
        return null;
    return data.decisions[there.items.get(parameter) ?? there.groups.get(group)];
}

function extentOf(decision, keys) {
    if (!decision || decision.own === 0)
        return "none";
    return decision.own === keys ? "all" : "some";
}

// What a cell says to those who cannot see it.
function cellWords(decision, keys, differs) {
    const extent = extentOf(decision, keys);
    const words = [{none: "none", all: `all of ${counted(keys, "key")}`,
                    some: decision ? `${decision.own} of ${counted(keys, "key")}` : ""}[extent]];
    if (decision && decision.unknown)
        words.push(`${counted(decision.unknown, "key")} with an index value that does not exist`);
    if (differs)
        words.push("not the same on all variants");
    return words.join(", ");
}

function cellText(decision, keys) {
    const extent = extentOf(decision, keys);
    const text = {none: "–", all: `${keys}`, some: decision ? `${decision.own}/${keys}` : ""}[extent];
    return decision && decision.unknown ? `${text} !${decision.unknown}` : text;
}

// Filters

function passes(parameter, filters) {
    const {name, access, keys, differing} = data.parameters[parameter];
    if (keys[filters.on] === null && !filters.differing)
        return false;
    if (!name.toLowerCase().includes(filters.search) || (filters.access && access !== filters.access))
        return false;
    if (filters.differing && !columns.some(preset => differing.includes(preset)))
        return false;
    const has = preset => {
        const decision = decisionOf(parameter, preset, filters.on);
        return filters.extent === "unknown"
            ? decision && decision.unknown > 0
            : extentOf(decision, keys[filters.on]) === filters.extent;
    };
    return !filters.extent || (filters.extent === "none" ? columns.every(has) : columns.some(has));
}

// The parameter whose cell has the keyboard stays where it is, if it is still there, so that it can be
// compared from one variant to another.
function filter() {
    const parameter = rows[focus.row];
    const preset = columns[focus.column - 1];
    const filters = {
        on: variant(),
        search: element("search").value.trim().toLowerCase(),
        access: element("access").value,
        extent: element("extent").value,
        differing: element("differing").checked,
    };
    const chosen = element("preset").value;
    columns = data.presets.map((_, number) => number).filter(
        number => chosen === "" ? data.presets[number].on[filters.on] || filters.differing
                                : number === Number(chosen));
    rows = data.parameters.map((_, number) => number).filter(number => passes(number, filters));
    element("count").textContent = `${rows.length} of ${counted(data.parameters.length, "parameter")}, `
        + counted(columns.length, "preset") + onVariant(filters.on, true);
    const [before, top] = [focus.row, frame.scrollTop];
    focus = {row: Math.max(0, rows.indexOf(parameter)), column: columns.indexOf(preset) + 1};
    drawHead();
    const height = rowHeight();
    const wanted = rows[focus.row] === parameter ? top + (focus.row - before) * height : 0;
    const most = Math.max(0, (rows.length + 1) * height - frame.clientHeight); // with the head
    draw(Math.min(Math.max(wanted, 0), most));
}

// The table

function drawHead() {
    const cells = ["parameter", "access", "keys", ...columns.map(number => data.presets[number].name)];
    element("names").replaceChildren(...cells.map(text => {
        const cell = node("th", text);
        cell.scope = "col";
        cell.title = text;
        return cell;
    }));
    drawn = new Map();
}

function rowHeight() {
    const row = element("rows").querySelector("tr:not(.space)");
    return row ? row.getBoundingClientRect().height : 28;
}

function space(height) {
    const row = node("tr", "", "space");
    row.setAttribute("role", "presentation");
    const cell = node("td");
    cell.colSpan = columns.length + 3;
    cell.style.height = `${height}px`;
    row.append(cell);
    return row;
}

// Makes a cell one that opens something.
function opens(cell, place) {
    cell.setAttribute("aria-haspopup", "dialog");
    cell.dataset.row = place.row;
    cell.dataset.column = place.column;
    cell.tabIndex = place.row === focus.row && place.column === focus.column ? 0 : -1;
    return cell;
}

// The cells of a row as they look; those of the columns from `begin` to before `end`.
function cellsOf(place, begin, end) {
    const {name, access, keys, differing} = data.parameters[rows[place]];
    const count = keys[variant()];
    const head = node("th", name);
    head.scope = "row";
    const cells = [head, node("td", access), node("td", count === null ? "–" : `${count}`)];
    for (const preset of columns.slice(begin, end)) {
        const decision = decisionOf(rows[place], preset, variant());
        const unknown = decision && decision.unknown > 0;
        cells.push(node("td", cellText(decision, count) + (differing.includes(preset) ? " *" : ""),
                        unknown ? "unknown" : extentOf(decision, count)));
    }
    return cells;
}

function rowOf(place) {
    const {name, keys, differing} = data.parameters[rows[place]];
    const row = node("tr");
    row.setAttribute("aria-rowindex", place + 2);
    row.append(...cellsOf(place, 0, columns.length));
    const [head, , , ...cells] = row.children;
    head.title = name;
    opens(head, {row: place, column: 0});
    cells.forEach((cell, column) => {
        const decision = decisionOf(rows[place], columns[column], variant());
        cell.setAttribute("aria-label", cellWords(decision, keys[variant()],
                                                  differing.includes(columns[column])));
        opens(cell, {row: place, column: column + 1});
    });
    return row;
}

// Draws the rows in view, or those that are when it is scrolled to `scrolled`. Rows that are in the
// table stay.
function draw(scrolled = frame.scrollTop) {
    const height = rowHeight();
    const top = Math.floor(scrolled / height);
    const bottom = Math.min(rows.length, top + Math.ceil(frame.clientHeight / height));
    const begin = Math.max(0, top - margin);
    const end = Math.min(rows.length, bottom + margin);
    const isDrawn = drawn.size > 0 && drawn.has(Math.min(top, rows.length - 1)) && drawn.has(bottom - 1);
    if (isDrawn && drawn.size < 4 * (end - begin))
        return;
    const hadFocus = element("rows").contains(document.activeElement);
    const shown = new Map();
    for (let place = begin; place < end; ++place)
        shown.set(place, drawn.get(place) ?? rowOf(place));
    drawn = shown;
    element("rows").replaceChildren(space(begin * height), ...shown.values(),
                                    space((rows.length - end) * height));
    frame.scrollTop = scrolled; // which is lost while the rows are away
    element("matrix").setAttribute("aria-rowcount", rows.length + 1);
    if (!focused() && rows.length > 0) { // the keyboard goes on where the eye is
        const last = Math.max(top, bottom - 2);
        setFocus({row: Math.min(Math.max(focus.row, top), last), column: focus.column});
    }
    if (hadFocus)
        focused()?.focus({preventScroll: true});
    if (rowHeight() !== height) { // the first rows, or letters of another size
        drawn = new Map();
        draw();
    }
}

const focused = () => element("rows").querySelector(
    `[data-row="${focus.row}"][data-column="${focus.column}"]`);

// The cell that Tab leads to; it need not be drawn yet.
function setFocus(place) {
    focused()?.setAttribute("tabindex", -1);
    focus = place;
    focused()?.setAttribute("tabindex", 0);
}

function moveFocus(row, column) {
    setFocus({row: Math.min(Math.max(row, 0), rows.length - 1),
              column: Math.min(Math.max(column, 0), columns.length)});
    const height = rowHeight();
    const top = focus.row * height;
    const visible = frame.clientHeight - 2 * height; // less the head
    if (top < frame.scrollTop)
        frame.scrollTop = top;
    else if (top > frame.scrollTop + visible)
        frame.scrollTop = top - visible;
    draw();
    // The first column stays in view, above what is scrolled.
    frame.style.scrollPaddingLeft = `${element("names").children[0].clientWidth}px`;
    focused()?.focus({preventScroll: true});
    focused()?.scrollIntoView({block: "nearest", inline: "nearest"});
}

// Details

function list(lines) {
    const made = node("ul");
    made.append(...lines.map(line => node("li", line)));
    return made;
}

function showDetail(title, ...content) {
    element("detail-title").textContent = title;
    element("detail-body").replaceChildren(...content);
    if (detail.open)
        detail.querySelector("button").focus(); // what had it is gone
    else
        detail.showModal();
}

function reasonsOf(numbers, there, access) {
    if (numbers.length === 0)
        return [there.none[access === "rw" ? "rw" : "ro"]];
    return numbers.map(number => `${data.files.presets}:${there.parts[number].line}: `
                                 + there.parts[number].text);
}

// What `keys` of a decision says of keys: "in", "out", or "unknown", in with an index value that
// does not exist.
const standings = {
    in: "In the preset:",
    out: "Not in the preset:",
    unknown: "In the preset, with an index value that does not exist:",
};

function showCell(parameter, preset) {
    const {name, access, keys} = data.parameters[parameter];
    const on = variant();
    const there = data.presets[preset].on[on];
    const decision = decisionOf(parameter, preset, on);
    const content = there
        ? [node("p", `${data.files.presets}:${there.line}: preset ${data.presets[preset].name}`)]
        : [node("p", `The lists of preset ${data.presets[preset].name} leave no key on this variant.`)];
    for (const [standing, deciding, endings] of decision ? decision.keys : []) {
        const part = node("section");
        part.dataset.standing = standing;
        part.append(node("b", `${standings[standing]} `),
                    ...endings.flatMap(ending => [node("code", name + ending), " "]),
                    list(reasonsOf(deciding, there, access)));
        content.push(part);
    }
    if (keys[on])
        content.push(definitionButton(parameter));
    else
        content.push(...definitionsOf(parameter, [on]));
    showDetail(`${name} in ${data.presets[preset].name}${onVariant(on)}`, ...content);
}

function definitionButton(parameter) {
    const button = node("button", `Definition of ${data.parameters[parameter].name}`);
    button.type = "button";
    button.addEventListener("click", () => showParameter(parameter));
    return button;
}

function variantName(on) {
    const {name, arguments: given} = data.variants[on];
    return name || given.join(" ") || "this device";
}

function onVariant(on, withArguments = false) {
    const {name, arguments: given} = data.variants[on];
    const described = given.join(" ");
    if (!name)
        return described && ` on ${described}`;
    return ` on ${name}${withArguments && described ? ` (${described})` : ""}`;
}

// A parameter, or one of its indices: its blocks, and what it comes to on some of the variants.
function definitionOf({blocks, conditions}, variants, textOn) {
    return [
        ...blocks.flatMap(({line, text}) => [node("p", `${data.files.parameters}:${line}`),
                                             node("pre", text)]),
        ...variants.flatMap(on => [
            node("p", `${variantName(on)}: ${textOn(on)}`, "on"),
            list(conditions.map(({line, outcomes}) =>
                `${data.files.parameters}:${line}: ${data.texts[outcomes[on]]}`)),
        ]),
    ];
}

function definitionsOf(parameter, variants) {
    const shown = data.parameters[parameter];
    const indices = new Set(shown.indices.map(number => data.indices[number]));
    return [
        ...definitionOf(shown, variants, on => shown.keys[on] === null
            ? "it does not exist" : counted(shown.keys[on], "key")),
        ...[...indices].flatMap(index => [
            node("h3", `Index ${index.name}`),
            ...definitionOf(index, variants, on => index.values[on] === null
                ? "it does not exist" : `values ${index.values[on] || "none"}`),
        ]),
    ];
}

function showParameter(parameter) {
    const {name, access, indices} = data.parameters[parameter];
    showDetail(`${name} (${[access, ...indices.map(number => data.indices[number].name)].join(", ")})`,
               ...definitionsOf(parameter, data.variants.map((_, on) => on)));
}

// On paper

const paperWidth = 110; // of a landscape page, in the size of its letters

// Where the columns are cut so that each part fits on a page, as in a terminal.
function columnCuts() {
    const widthOf = longest => 0.65 * longest + 1;
    const name = rows.reduce((most, row) => Math.max(most, data.parameters[row].name.length), 9);
    const most = paperWidth - widthOf(name) - 2 * widthOf(8);
    const cuts = [0];
    let width = 0;
    columns.forEach((preset, column) => {
        const own = widthOf(Math.max(data.presets[preset].name.length, 8));
        if (width > 0 && width + own > most) {
            cuts.push(column);
            width = 0;
        }
        width += own;
    });
    return [...cuts, columns.length];
}

const mostPaperCells = 200000; // more keep a browser busy for minutes

function paperTable(begin, end) {
    const table = node("table");
    const heads = [...element("names").children].map(cell => cell.cloneNode(true));
    table.createTHead().insertRow().append(...heads.slice(0, 3), ...heads.slice(3 + begin, 3 + end));
    const body = table.createTBody();
    rows.forEach((_, place) => body.insertRow().append(...cellsOf(place, begin, end)));
    return table;
}

// Draws what the filters have left, all of it: what is out of view is not in the table.
function drawPaper() {
    const filters = [...element("filters").elements].filter(
        field => field.id !== "variant" && (field.type === "checkbox" ? field.checked : field.value));
    const about = [element("count").textContent, ...filters.map(
        field => `${field.parentElement.firstChild.textContent.trim() || "only what"} `
                 + (field.selectedOptions ? field.selectedOptions[0].text
                    : field.type === "checkbox" ? field.parentElement.textContent.trim()
                    : field.value))];
    const content = [node("p", about.join("; "))];
    const cells = rows.length * columns.length;
    if (cells > mostPaperCells) {
        content.push(node("p", `These are ${cells} cells: choose at most ${mostPaperCells} with the `
                               + "filters before you print."));
    } else {
        const cuts = columnCuts();
        content.push(...cuts.slice(1).map((end, part) => paperTable(cuts[part], end)));
    }
    element("paper").replaceChildren(...content);
}

// Events

function open(place) {
    if (place.column === 0)
        showParameter(rows[place.row]);
    else
        showCell(rows[place.row], columns[place.column - 1]);
}

element("rows").addEventListener("click", event => {
    const cell = event.target.closest("[data-row]");
    if (!cell)
        return;
    moveFocus(Number(cell.dataset.row), Number(cell.dataset.column));
    open(focus);
});

element("rows").addEventListener("keydown", event => {
    const page = Math.max(1, Math.floor(frame.clientHeight / rowHeight()) - 2);
    const steps = {
        ArrowUp: [-1, 0], ArrowDown: [1, 0], ArrowLeft: [0, -1], ArrowRight: [0, 1],
        PageUp: [-page, 0], PageDown: [page, 0], Home: [0, -columns.length], End: [0, columns.length],
    };
    if (event.altKey || event.ctrlKey || event.metaKey)
        return; // the browser's own
    const step = steps[event.key];
    const isOpening = event.key === "Enter" || event.key === " ";
    if (!step && !isOpening)
        return;
    event.preventDefault();
    if (isOpening)
        open(focus);
    else
        moveFocus(focus.row + step[0], focus.column + step[1]);
});

document.addEventListener("keydown", event => {
    if (event.key === "/" && event.target !== element("search") && !detail.open) {
        event.preventDefault();
        element("search").focus();
    }
});

frame.addEventListener("scroll", () => draw(), {passive: true});
window.addEventListener("resize", () => draw());
element("filters").addEventListener("input", filter);
element("filters").addEventListener("submit", event => event.preventDefault());
window.addEventListener("beforeprint", drawPaper);
window.addEventListener("afterprint", () => element("paper").replaceChildren());

data.variants.forEach((_, on) => element("variant").append(new Option(variantName(on), on)));
for (const only of document.querySelectorAll(".comparing"))
    only.hidden = data.variants.length === 1;
element("about").textContent = [`Of ${data.files.parameters} and ${data.files.presets}`,
                                ...data.only].join("; only ");
data.presets.forEach(({name}, number) => element("preset").append(new Option(name, number)));
filter();
