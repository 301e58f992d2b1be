// Shows what becomes of stored presets in a release, keys of a parameter with the same fate in a row.
// Everything was decided by the tool: this looks the answers up.

const groupClasses = ["lost", "dropped", "taken", "new"]; // of the colours, by number of a group
const headings = ["key", "what becomes of it", "new key", "keys", "values", "where"];
columns = headings.slice(1);

for (const {parameters} of [data, ...data.releases]) { // of any names, also those that objects have
    parameters.blocks = new Map(Object.entries(parameters.blocks));
    parameters.indices = new Map(Object.entries(parameters.indices));
}
for (const older of data.releases) {
    older.sets = older.sets.map(presets => new Set(presets));
    for (const place of older.places)
        place.on = new Map(place.on);
}

const release = () => data.releases[Number(element("release").value)];
let shown = null; // the release of which there are variants and presets to choose
const classOf = row => groupClasses[data.fates[row.fate].group];

// The number of what a filter has, or null if it has all.
function chosen(filter) {
    const {value} = element(filter);
    return value === "" ? null : Number(value);
}

// Filters

// Whether a place is one of those that are chosen.
function isChosen({on}, variant, preset) {
    const sets = variant === null ? [...on.values()] : on.has(variant) ? [on.get(variant)] : [];
    return preset === null ? sets.length > 0 : sets.some(set => release().sets[set].has(preset));
}

// The rows that pass all filters but that of fates.
function rowsInView() {
    const {places, rows: all} = release();
    const [variant, preset] = [chosen("variant"), chosen("preset")];
    const search = element("search").value.trim().toLowerCase();
    const isPlaceChosen = places.map(place => isChosen(place, variant, preset));
    return all.filter(({place, parameter, newName}) => isPlaceChosen[place]
        && [parameter, newName].some(name => name.toLowerCase().includes(search)));
}

const passes = (row, fate) => fate === "" || (
    fate === "changed" ? data.fates[row.fate].code !== "kept" : data.fates[row.fate].code === fate);

const keyCount = some => new Set(
    some.flatMap(({keys}) => keys.map(([before, after]) => `${before}\n${after}`))).size;

function filter() {
    if (shown !== release())
        fillChoices();
    const inView = rowsInView();
    const passing = inView.filter(row => passes(row, element("fate").value));
    const {name, rows: all, variants} = release();
    const variant = chosen("variant");
    element("count").textContent = `${passing.length} of ${counted(all.length, "row")}, `
        + `${counted(keyCount(passing), "key")} from ${name}`
        + (variant === null ? "" : onVariant(variants[variant], true));
    showSummary(inView);
    showRows(passing, headings, focus.column);
}

// The variants and presets of another release; what was chosen is chosen again, if it is there.
function fillChoices() {
    shown = release();
    const fill = (id, names) => {
        const select = element(id);
        const before = select.value && select.selectedOptions[0].text; // nothing if it is all
        select.replaceChildren(new Option("all", ""),
                               ...names.map((name, number) => new Option(name, number)));
        select.selectedIndex = Math.max(0, names.indexOf(before) + 1);
    };
    fill("variant", shown.variants.map(nameOfVariant));
    fill("preset", shown.presets);
}

// By fate, how much there is; one that is clicked is the only one in the table.
function showSummary(inView) {
    const lines = release().gone.map(line => node("li", line, "lost"));
    let lastGroup = null;
    data.fates.forEach(({code, text, group}, fate) => {
        const own = inView.filter(row => row.fate === fate);
        if (own.length === 0)
            return;
        const parameters = new Set(own.map(({parameter}) => parameter)).size;
        if (group !== lastGroup)
            lines.push(node("li", `${data.groups[group]}:`, "group"));
        lastGroup = group;
        const button = node("button", `${counted(keyCount(own), "key")} of `
            + `${counted(parameters, "parameter")}: ${text}`, groupClasses[group]);
        button.type = "button";
        button.dataset.fate = code;
        button.setAttribute("aria-pressed", element("fate").value === code);
        const line = node("li");
        line.append(button);
        lines.push(line);
    });
    const focused = element("summary").contains(document.activeElement)
        && document.activeElement.dataset.fate;
    element("summary").replaceChildren(...lines);
    if (focused) // what had the keyboard is gone
        element("summary").querySelector(`[data-fate="${focused}"]`)?.focus();
}

// The table

// The first of the keys, before or after; of keys that are in no file, there is only an after.
const firstOf = (keys, key) => keys.length > 1 && key ? `${key} and ${keys.length - 1} more` : key;

function cellsOf(place) {
    const {fate, keys, values, place: where} = rows[place];
    const [before, after] = keys[0];
    const head = node("th", firstOf(keys, before || after));
    head.scope = "row";
    return [head, node("td", data.fates[fate].text, classOf(rows[place])),
            ...[firstOf(keys, after) || "–", `${keys.length}`, values.join(", ") || "–",
                release().places[where].text || "everywhere"].map(text => node("td", text))];
}

function rowOf(place) {
    const row = node("tr");
    row.setAttribute("aria-rowindex", place + 2);
    row.append(...cellsOf(place));
    [...row.children].forEach((cell, column) => {
        cell.title = cell.textContent;
        opens(cell, {row: place, column});
    });
    return row;
}

// Details

// What a release defines of a parameter and of its indices.
function definitionIn(name, {file, blocks, indices}) {
    const names = new Set([name, ...indices.get(name) ?? []]);
    return [...names].flatMap(defined => excerpts(file, blocks.get(defined) ?? []));
}

function open({row: number}) {
    const {fate, parameter, newName, keys, values, place} = rows[number];
    const {name, variants, presets, sets, places, parameters} = release();
    const {text, group} = data.fates[fate];
    const content = [
        node("p", `From ${name} to ${data.newest}: ${data.groups[group]}.`, "on"),
        node("h3", counted(keys.length, "key")),
        list(keys.map(([before, after]) => before && after && before !== after
            ? `${before} → ${after}` : before || after)),
    ];
    if (values.length > 0)
        content.push(node("h3", "Values"), list(values));
    content.push(node("h3", "Presets"), list([...places[place].on].map(([variant, set]) =>
        `${nameOfVariant(variants[variant])}: `
        + [...sets[set]].map(preset => presets[preset]).join(", "))));
    content.push(node("h3", "Definitions"), ...definitionIn(parameter, parameters),
                 ...definitionIn(newName || parameter, data.parameters));
    showDetail(`${parameter}: ${text}`, ...content);
}

const paperTables = heads => [paperTable(heads, cellsOf)];

element("summary").addEventListener("click", event => {
    const {fate} = event.target.dataset;
    if (!fate)
        return;
    element("fate").value = element("fate").value === fate ? "changed" : fate;
    filter();
});

// A button for a text, if there is one.
function offer(id, title, text) {
    element(id).hidden = text === "";
    element(id).addEventListener("click", () => showDetail(title, node("pre", text)));
}

offer("suggestion", "Lines of a translate section that are missing, for all older releases",
      data.suggestion);
if (data.files)
    element("files").textContent = `${data.files.good} of ${counted(data.files.count, "file")} `
        + "without a warning";
offer("files", "Files", data.files?.text ?? "");

// The first release of which something is lost is shown first.
data.releases.forEach(({name, lost}, number) => element("release").append(
    new Option(lost ? `${name} (with losses)` : name, number)));
element("release").value = Math.max(0, data.releases.findIndex(({lost}) => lost));
for (const several of document.querySelectorAll(".several"))
    several.hidden = data.releases.length === 1;
data.groups.forEach((title, group) => {
    const options = document.createElement("optgroup");
    options.label = title;
    data.fates.filter(fate => fate.group === group).forEach(
        ({code, text}) => options.append(new Option(text, code)));
    element("fate").append(options);
});
element("about").textContent = `When ${data.newest} is installed on a device with presets of `
    + (data.releases.length === 1 ? data.releases[0].name
       : `one of ${data.releases.length} older releases`);
filter();
