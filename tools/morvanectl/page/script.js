// Shows the matrix that stands in the page. Everything was decided by the tool: this looks the
// answers up, filters rows, and draws those that are in view.
"use strict";

const data = JSON.parse(document.getElementById("data").textContent);
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

// The decision about a parameter; nothing if it or the preset does not exist on the variant.
function decisionOf(parameter, preset, on) {
    const there = data.presets[preset].on[on];
    const group = data.parameters[parameter].groups[on];
    if (!there || group === null)
        return null;
    return data.decisions[there.items[parameter] ?? there.groups[group]];
}

function extentOf(decision, keys) {
    if (!decision || decision.own === 0)
        return "none";
    return decision.own === keys ? "all" : "some";
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
    return !filters.extent || columns.some(preset => {
        const decision = decisionOf(parameter, preset, filters.on);
        return filters.extent === "unknown"
            ? decision && decision.unknown > 0
            : extentOf(decision, keys[filters.on]) === filters.extent;
    });
}

function filter() {
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
    focus = {row: 0, column: 0};
    element("count").textContent =
        `${rows.length} of ${data.parameters.length} parameters, ${columns.length} presets`;
    drawHead();
    frame.scrollTop = 0;
    draw();
}

// The table

function drawHead() {
    const cells = ["parameter", "access", "keys", ...columns.map(number => data.presets[number].name)];
    element("names").replaceChildren(...cells.map(text => {
        const cell = node("th", text);
        cell.scope = "col";
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
    const cell = node("td");
    cell.colSpan = columns.length + 3;
    cell.style.height = `${height}px`;
    row.append(cell);
    return row;
}

// Makes a cell one that opens something.
function opens(cell, label, place) {
    cell.setAttribute("aria-label", label);
    cell.dataset.row = place.row;
    cell.dataset.column = place.column;
    cell.tabIndex = place.row === focus.row && place.column === focus.column ? 0 : -1;
    return cell;
}

function rowOf(place) {
    const {name, access, keys, differing} = data.parameters[rows[place]];
    const count = keys[variant()];
    const row = node("tr");
    row.setAttribute("aria-rowindex", place + 2);
    const head = opens(node("th", name), `${name}: definition`, {row: place, column: 0});
    head.scope = "row";
    head.title = name;
    row.append(head, node("td", access), node("td", count === null ? "–" : `${count}`));
    columns.forEach((preset, column) => {
        const decision = decisionOf(rows[place], preset, variant());
        const unknown = decision && decision.unknown > 0;
        const text = cellText(decision, count) + (differing.includes(preset) ? " *" : "");
        const cell = node("td", text, unknown ? "unknown" : extentOf(decision, count));
        row.append(opens(cell, `${name} in ${data.presets[preset].name}: ${text}`,
                         {row: place, column: column + 1}));
    });
    return row;
}

// Draws again when rows come into view that are not in the table. Those that are stay.
function draw() {
    const height = rowHeight();
    const top = Math.floor(frame.scrollTop / height);
    const bottom = Math.min(rows.length, top + Math.ceil(frame.clientHeight / height));
    const begin = Math.max(0, top - margin);
    const end = Math.min(rows.length, bottom + margin);
    const isDrawn = drawn.size > 0 && drawn.has(Math.min(top, rows.length - 1)) && drawn.has(bottom - 1);
    if (isDrawn && drawn.size < 4 * (end - begin))
        return;
    const hadFocus = element("rows").contains(document.activeElement);
    const scrolled = frame.scrollTop;
    const shown = new Map();
    for (let place = begin; place < end; ++place)
        shown.set(place, drawn.get(place) ?? rowOf(place));
    drawn = shown;
    element("rows").replaceChildren(space(begin * height), ...shown.values(),
                                    space((rows.length - end) * height));
    frame.scrollTop = scrolled; // which is lost while the rows are away
    element("matrix").setAttribute("aria-rowcount", rows.length + 1);
    if (hadFocus)
        focused()?.focus({preventScroll: true});
    if (rowHeight() !== height) { // the first rows, or letters of another size
        drawn = new Map();
        draw();
    }
}

const focused = () => element("rows").querySelector(
    `[data-row="${focus.row}"][data-column="${focus.column}"]`);

function moveFocus(row, column) {
    const before = focused();
    focus = {row: Math.min(Math.max(row, 0), rows.length - 1),
             column: Math.min(Math.max(column, 0), columns.length)};
    const height = rowHeight();
    const top = focus.row * height;
    const visible = frame.clientHeight - 2 * height; // less the head
    if (top < frame.scrollTop)
        frame.scrollTop = top;
    else if (top > frame.scrollTop + visible)
        frame.scrollTop = top - visible;
    draw();
    if (before)
        before.tabIndex = -1;
    const now = focused();
    if (now) {
        now.tabIndex = 0;
        now.focus();
    }
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
    detail.showModal();
}

function reasonsOf(numbers, there, access) {
    if (numbers.length === 0)
        return [there.none[access === "rw" ? "rw" : "ro"]];
    return numbers.map(number => `${data.files.presets}:${there.parts[number].line}: `
                                 + there.parts[number].text);
}

function showCell(parameter, preset) {
    const {name, access} = data.parameters[parameter];
    const on = variant();
    const title = `${name} in ${data.presets[preset].name}` + onVariant(on);
    const decision = decisionOf(parameter, preset, on);
    if (!decision) {
        const missing = data.presets[preset].on[on] ? `parameter ${name}` : `preset ${data.presets[preset].name}`;
        showDetail(title, node("p", `There is no ${missing} on this variant.`));
        return;
    }
    const there = data.presets[preset].on[on];
    const content = [node("p", `${data.files.presets}:${there.line}: preset ${data.presets[preset].name}`)];
    for (const [covered, deciding, endings] of decision.keys) {
        const part = node("section");
        part.dataset.covered = covered;
        part.append(node("b", covered ? "In the preset: " : "Not in the preset: "),
                    ...endings.flatMap(ending => [node("code", name + ending), " "]),
                    list(reasonsOf(deciding, there, access)));
        content.push(part);
    }
    showDetail(title, ...content);
}

function variantName(on) {
    const {name, arguments: given} = data.variants[on];
    return name || given.join(" ") || "this device";
}

const onVariant = on => data.variants[on].name ? ` on ${data.variants[on].name}` : "";

// A parameter, or one of its indices: its blocks, and by variant what it comes to there.
function definitionOf({blocks, conditions}, textOn) {
    return [
        ...blocks.flatMap(({line, text}) => [node("p", `${data.files.parameters}:${line}`),
                                             node("pre", text)]),
        ...data.variants.flatMap((_, on) => [
            node("p", `${variantName(on)}: ${textOn(on)}`, "on"),
            list(conditions.map(({line, outcomes}) =>
                `${data.files.parameters}:${line}: ${data.texts[outcomes[on]]}`)),
        ]),
    ];
}

function showParameter(parameter) {
    const shown = data.parameters[parameter];
    const indices = shown.indices.map(number => data.indices[number]);
    showDetail(
        `${shown.name} (${[shown.access, ...indices.map(({name}) => name)].join(", ")})`,
        ...definitionOf(shown, on => shown.keys[on] === null ? "it does not exist."
                                                             : `it has ${shown.keys[on]} keys.`),
        ...[...new Set(indices)].flatMap(index => [
            node("h3", `Index ${index.name}`),
            ...definitionOf(index, on => index.values[on] === null
                ? "it does not exist." : `its values are ${index.values[on] || "none"}.`),
        ]));
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

// Draws what the filters have left, all of it: what is out of view is not in the table.
function drawPaper() {
    const cuts = columnCuts();
    const tables = cuts.slice(1).map((end, part) => {
        const picked = cells => [...cells.slice(0, 3), ...cells.slice(3 + cuts[part], 3 + end)].map(
            cell => cell.cloneNode(true));
        const table = node("table");
        table.createTHead().insertRow().append(...picked([...element("names").children]));
        return {table, picked, body: table.createTBody()};
    });
    rows.forEach((_, place) => {
        const cells = [...rowOf(place).children];
        for (const {picked, body} of tables)
            body.insertRow().append(...picked(cells));
    });
    const title = node("p", `${element("count").textContent}${onVariant(variant())}`);
    element("paper").replaceChildren(title, ...tables.map(({table}) => table));
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
    if (event.key === "/" && event.target.tagName !== "INPUT" && !detail.open) {
        event.preventDefault();
        element("search").focus();
    }
});

frame.addEventListener("scroll", draw, {passive: true});
window.addEventListener("resize", draw);
element("filters").addEventListener("input", filter);
element("filters").addEventListener("submit", event => event.preventDefault());
window.addEventListener("beforeprint", drawPaper);
window.addEventListener("afterprint", () => element("paper").replaceChildren());

data.variants.forEach((_, on) => element("variant").append(new Option(variantName(on), on)));
data.presets.forEach(({name}, number) => element("preset").append(new Option(name, number)));
filter();
