// Shows a matrix: of presets, which are its columns, and of parameters. Everything was decided by the
// tool: this looks the answers up.

for (const there of data.presets.flatMap(({on}) => on).filter(Boolean)) {
    there.items = new Map(there.items);
    there.groups = new Map(there.groups);
}

const variant = () => Number(element("variant").value);

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

function filter() {
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
    const passing = data.parameters.map((_, number) => number).filter(
        number => passes(number, filters));
    element("count").textContent = `${passing.length} of `
        + `${counted(data.parameters.length, "parameter")}, ${counted(columns.length, "preset")}`
        + onVariant(data.variants[filters.on], true);
    showRows(passing, ["parameter", "access", "keys",
                       ...columns.map(number => data.presets[number].name)],
             columns.indexOf(preset) + 1);
}

// The table

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

// Details

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
    showDetail(`${name} in ${data.presets[preset].name}${onVariant(data.variants[on])}`,
               ...content);
}

function definitionButton(parameter) {
    const button = node("button", `Definition of ${data.parameters[parameter].name}`);
    button.type = "button";
    button.addEventListener("click", () => showParameter(parameter));
    return button;
}

// A parameter, or one of its indices: its blocks, and what it comes to on some of the variants.
function definitionOf({blocks, conditions}, variants, textOn) {
    return [
        ...excerpts(data.files.parameters, blocks),
        ...variants.flatMap(on => [
            node("p", `${nameOfVariant(data.variants[on])}: ${textOn(on)}`, "on"),
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

function paperTables(heads) {
    const cuts = columnCuts();
    return cuts.slice(1).map((end, part) => paperTable(
        [...heads.slice(0, 3), ...heads.slice(3 + cuts[part], 3 + end)],
        place => cellsOf(place, cuts[part], end)));
}

function open(place) {
    if (place.column === 0)
        showParameter(rows[place.row]);
    else
        showCell(rows[place.row], columns[place.column - 1]);
}

data.variants.forEach(
    (variant, on) => element("variant").append(new Option(nameOfVariant(variant), on)));
for (const only of document.querySelectorAll(".comparing"))
    only.hidden = data.variants.length === 1;
element("about").textContent = [`Of ${data.files.parameters} and ${data.files.presets}`,
                                ...data.only].join("; only ");
data.presets.forEach(({name}, number) => element("preset").append(new Option(name, number)));
filter();
