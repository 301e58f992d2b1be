// A table of which only the rows in view are drawn, filters above it, a dialog for details, and all
// of the rows on paper. A page says what it shows: `filter`, `rowOf`, `open` and `paperTables`.
"use strict";

const data = JSON.parse(document.getElementById("data").textContent);
const element = id => document.getElementById(id);
const frame = element("frame");
const detail = element("detail");
const margin = 10; // rows that are drawn above and below those in view

let rows = [];    // what passes the filters
let columns = []; // what a row has beside its heading, and the keyboard reaches
let drawn = new Map(); // the rows that are in the table, by their places
let focus = {row: 0, column: 0}; // the cell that has the keyboard; column 0 is the heading

function node(name, text = "", className = "") {
    const made = document.createElement(name);
    made.textContent = text;
    if (className)
        made.className = className;
    return made;
}

const counted = (count, thing) => `${count} ${thing}${count === 1 ? "" : "s"}`;
const nameOfVariant = ({name, arguments: given}) => name || given.join(" ") || "this device";

// Of a variant, behind what is said of it.
function onVariant({name, arguments: given}, withArguments = false) {
    const described = given.join(" ");
    if (!name)
        return described && ` on ${described}`;
    return ` on ${name}${withArguments && described ? ` (${described})` : ""}`;
}

// Rows

// Shows other rows below their headings. The row whose cell has the keyboard stays where it is, if it
// is still there, so that it can be compared from one choice of the filters to another.
function showRows(others, headings, column) {
    const row = rows[focus.row];
    const [before, top] = [focus.row, frame.scrollTop];
    rows = others;
    focus = {row: Math.max(0, rows.indexOf(row)), column};
    drawn = new Map();
    drawHead(headings);
    const height = rowHeight();
    const wanted = rows[focus.row] === row ? top + (focus.row - before) * height : 0;
    const most = Math.max(0, (rows.length + 1) * height - frame.clientHeight); // with the head
    draw(Math.min(Math.max(wanted, 0), most));
}

function drawHead(headings) {
    element("names").replaceChildren(...headings.map(text => {
        const cell = node("th", text);
        cell.scope = "col";
        cell.title = text;
        return cell;
    }));
}

function rowHeight() {
    const row = element("rows").querySelector("tr:not(.space)");
    return row ? row.getBoundingClientRect().height : 28;
}

function space(height) {
    const row = node("tr", "", "space");
    row.setAttribute("role", "presentation");
    const cell = node("td");
    cell.colSpan = element("names").children.length;
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
    element("table").setAttribute("aria-rowcount", rows.length + 1);
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

// The lines of a file that define something.
const excerpts = (file, blocks) => blocks.flatMap(
    ({line, text}) => [node("p", `${file}:${line}`), node("pre", text)]);

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

// On paper

const mostPaperCells = 200000; // more keep a browser busy for minutes

function paperTable(heads, cellsAt) {
    const table = node("table");
    table.createTHead().insertRow().append(...heads.map(cell => cell.cloneNode(true)));
    const body = table.createTBody();
    rows.forEach((_, place) => body.insertRow().append(...cellsAt(place)));
    return table;
}

// What has been chosen with the filters; the release and the variant are in the count.
function chosenFilters() {
    return [...element("filters").elements]
        .filter(field => !["release", "variant"].includes(field.id)
                         && (field.type === "checkbox" ? field.checked : field.value))
        .map(field => `${field.parentElement.firstChild.textContent.trim() || "only what"} `
                      + (field.selectedOptions ? field.selectedOptions[0].text
                         : field.type === "checkbox" ? field.parentElement.textContent.trim()
                         : field.value));
}

// Draws what the filters have left, all of it: what is out of view is not in the table.
function drawPaper() {
    const heads = [...element("names").children];
    const cells = rows.length * columns.length;
    element("paper").replaceChildren(
        node("p", [element("count").textContent, ...chosenFilters()].join("; ")),
        ...(cells > mostPaperCells
            ? [node("p", `These are ${cells} cells: choose at most ${mostPaperCells} with the filters `
                         + "before you print.")]
            : paperTables(heads)));
}

// Events

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
