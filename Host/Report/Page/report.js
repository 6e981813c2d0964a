// The report in the browser: takes the page's planes out of their scripts, draws them tile by tile, and answers for the
// dot that is clicked in the words of boardmap explain. Rows and columns count as those of the page; a row of the
// picture is a row of a plane, a column is that of the plane plus Area.FirstColumn.
"use strict";
(async () => {
    const began = performance.now();
    const $ = (id) => document.getElementById(id);

    // zlib in base64, as the program put it there.
    async function inflate(id) {
        const text = atob($(id).textContent);
        const bytes = new Uint8Array(text.length);
        for (let i = 0; i < bytes.length; ++i) {
            bytes[i] = text.charCodeAt(i);
        }
        const stream = new Blob([bytes]).stream().pipeThrough(new DecompressionStream("deflate"));
        return new Uint8Array(await new Response(stream).arrayBuffer());
    }

    const data = JSON.parse(new TextDecoder().decode(await inflate("data")));
    const board = data.Board;
    const area = data.Area;
    const bits = area.PixelBits;
    const most = (1 << bits) - 1;
    const perByte = 8 / bits;
    await Promise.all(data.Units.map(async (unit, i) => {
        unit.plane = await inflate("plane-" + i);
        unit.job = unit.HasJobPlane ? await inflate("job-" + i) : null;
    }));

    function valueAt(plane, row, at) {
        const byte = plane[row * area.RowBytes + Math.floor(at / perByte)];
        return (byte >> (8 - bits - (at % perByte) * bits)) & most;
    }

    // ---- What explain says. ----

    const zones = board.Zones;
    const pageWidth = board.Page.Width;

    function passOf(swath) {
        const ltr = !board.Bidirectional || swath % 2 === 0;
        return {
            ltr: ltr,
            firstColumn: ltr ? -zones.LeftStripeWidth : pageWidth + zones.RightStripeWidth - 1,
            step: ltr ? 1 : -1,
            firstZone: ltr ? zones.LeftStripeWidth : zones.RightStripeWidth,
            lastZone: ltr ? zones.RightStripeWidth : zones.LeftStripeWidth,
        };
    }

    function pointOf(unit, nozzle, position, swath, pass) {
        const info = unit.Info;
        const met = position - pass.firstZone - (pass.ltr ? info.Horizon_2 : info.Horizon_1);
        const begins = unit.Stripes[pass.ltr ? 1 : 0]; // of the left and the right one; -1: none
        const inStripe = (begin) => begin >= 0 && position >= begin && position < begin + info.StripeLength;
        if (inStripe(begins[1])) {
            return {area: "right-stripe", at: position - begins[1]};
        }
        if (inStripe(begins[0])) {
            return {area: "left-stripe", at: position - begins[0]};
        }
        if (met >= 0 && met < pageWidth) {
            if (info.Separation === "") {
                return {area: "nothing"};
            }
            const row = swath * board.Nozzles + nozzle;
            const column = pass.ltr ? met : pageWidth - 1 - met;
            return {area: row < board.Page.Height ? "page" : "below", row: row, column: column};
        }
        if (met < 0) {
            return {area: position < pass.firstZone ? "first-zone" : "margin"};
        }
        return {area: met < pageWidth + pass.lastZone ? "last-zone" : "margin"};
    }

    function pointText(unit, point, pass) {
        switch (point.area) {
        case "page":
            return "prints row " + point.row + ", column " + point.column + " of " +
                (data.PageCount > 1 ? "page " + data.Page : "the page") +
                (unit.HasPage ? ", from " + unit.SeparationShown
                    : ", for which the unit has no separation, so that it is blank");
        case "below":
            return "is below the page: its row would be " + point.row + ", the page's last one is " +
                (board.Page.Height - 1);
        case "first-zone":
            return "is in the " + (pass.ltr ? "left" : "right") + " zone, before the page, where the unit has no stripe";
        case "last-zone":
            return "is in the " + (pass.ltr ? "right" : "left") + " zone, behind the page, where the unit has no stripe";
        case "margin":
            return "is in the room that the units' offsets need, where this unit prints nothing";
        case "left-stripe":
        case "right-stripe":
            return "prints position " + point.at + " of the unit's " + (point.area === "left-stripe" ? "left" : "right") +
                " ink stripe (" + unit.Info.StripeColor + ")";
        default:
            return unit.Info.StripeColor === ""
                ? "prints nothing: the unit has neither a separation nor ink stripes"
                : "prints nothing: the unit has no separation, and no ink stripe here";
        }
    }

    function valueText(unit, point, value, job) {
        if (point.area === "page" && !unit.HasPage) {
            return "; the nozzle does not fire";
        }
        const stripe = point.area.endsWith("stripe");
        if (point.area === "page" || stripe) {
            return "; the " + (stripe ? "stripe" : "separation") + " has " + job + " of " +
                ((1 << board.BitsPerPixel) - 1) + " there, so the nozzle " + (job !== 0 ? "fires" : "does not fire");
        }
        return value === null ? "" : "; by the output the nozzle " + (value !== 0 ? "fires" : "does not fire");
    }

    // A place is [line, bit of the line, role, bit of the pixel (-1: any ink counts), whether ink sets it, its bit of
    // the value in the plane].
    function bitsText(unit, nozzle, position, band, value, job) {
        if (band < 0) {
            return "The swath is blank and SkipBlank is set: the output has no band for it.";
        }
        const places = unit.Places[nozzle];
        if (places.length === 0) {
            return "The layout has no place for this nozzle: it never fires.";
        }
        return (places.length > 1 ? "Its bits are " : "Its bit is ") + places.map((place) => {
            const [line, bit, role, pixelBit, dotBit, mask] = place;
            const found = (value & mask) !== 0;
            const expected = pixelBit < 0 ? job !== 0 && dotBit === 1
                : ((job >> (board.BitsPerPixel - 1 - pixelBit)) & 1) === 1;
            return "line " + (position * board.LinesPerPosition + line) + ", byte " + Math.floor(bit / 8) + ", bit " +
                bit % 8 + " (frame " + Math.floor(bit / board.FrameBits) + "; " + data.Roles[role] + "): " +
                (found ? "1" : "0") + " in the output" +
                (found !== expected ? ", BUT " + (expected ? "1" : "0") + " BY THE JOB" : "");
        }).join("; ") + ".";
    }

    // What the unit does at a dot of the picture: the paragraph, and whether its nozzle fires and should.
    function dotOf(unit, row, column) {
        const swath = Math.floor(row / board.Nozzles);
        const nozzle = row % board.Nozzles;
        const pass = passOf(swath);
        const band = data.Bands[swath];
        const offset = pass.ltr ? unit.Info.Horizon_2 : unit.Info.Horizon_1;
        const position = (column - pass.firstColumn) * pass.step + offset;
        const point = pointOf(unit, nozzle, position, swath, pass);
        const at = column - area.FirstColumn;
        const found = valueAt(unit.plane, row, at);
        const value = band < 0 ? null : found;
        const job = unit.job !== null ? valueAt(unit.job, row, at) : data.DropSize > 0 ? Math.min(found, 1) : found;
        const direction = pass.ltr ? "left to right" : "right to left";
        const rules = unit.Rules[pass.ltr ? 0 : 1][nozzle].map((rule) => rule < 0 ? data.Directions[swath] : data.Rules[rule]);
        const text = "U" + unit.Text.slice(1) + ", nozzle " + nozzle + ", at position " + position + " of " +
            (band < 0 ? "" : "band " + band + " (") + (data.PageCount > 1 ? "page " + data.Page + ", " : "") + "swath " +
            swath + (band < 0 ? " (" : ", ") + direction + ") " + pointText(unit, point, pass) + valueText(unit, point, value, job) + ". " +
            bitsText(unit, nozzle, position, band, found, job) +
            (rules.length > 0 ? " How it came there: " + rules.join("; ") + "." : "");
        return {text: text, band: band, nozzle: nozzle, position: position, area: point.area, fires: found !== 0 || (job !== 0 && point.area !== "below"), wrong: text.includes(", BUT ")};
    }

    // ---- The page. ----

    const tileSize = 256;
    const levels = new Uint8Array(256); // sum of the values of a byte's dots
    for (let byte = 0; byte < 256; ++byte) {
        for (let i = 0; i < perByte; ++i) {
            levels[byte] += (byte >> (i * bits)) & most;
        }
    }

    // Sums of squares of 8 x 8 dots, at most 192: what all pictures of squares of that size and more are made of.
    const coarseShift = 3;
    function coarseOf(unit) {
        if (!unit.coarse) {
            const width = Math.ceil(area.ColumnCount / 8);
            const sums = new Uint8Array(width * Math.ceil(area.RowCount / 8));
            const plane = unit.plane;
            for (let row = 0; row < area.RowCount; ++row) {
                const from = row * area.RowBytes;
                const to = (row >> coarseShift) * width;
                for (let i = 0; i < area.RowBytes; ++i) {
                    const byte = plane[from + i];
                    if (byte !== 0) {
                        sums[to + (bits === 1 ? i : i >> 1)] += levels[byte];
                    }
                }
            }
            unit.coarse = {width: width, height: Math.ceil(area.RowCount / 8), sums: sums};
        }
        return unit.coarse;
    }

    // How much of the square of 1 << shift dots at x, y has ink, 0 to 255.
    function alphaOf(unit, x, y, shift) {
        let sum = 0;
        if (shift < coarseShift) {
            const endRow = Math.min((y + 1) << shift, area.RowCount);
            const endColumn = Math.min((x + 1) << shift, area.ColumnCount);
            for (let row = y << shift; row < endRow; ++row) {
                for (let at = x << shift; at < endColumn; ++at) {
                    sum += valueAt(unit.plane, row, at);
                }
            }
        } else {
            const coarse = coarseOf(unit);
            const by = shift - coarseShift;
            const endRow = Math.min((y + 1) << by, coarse.height);
            const endColumn = Math.min((x + 1) << by, coarse.width);
            for (let row = y << by; row < endRow; ++row) {
                for (let at = x << by; at < endColumn; ++at) {
                    sum += coarse.sums[row * coarse.width + at];
                }
            }
        }
        return Math.round(255 * sum / most / (1 << (2 * shift)));
    }

    function tileDraw(unit, canvas, coords) {
        const shift = -coords.z;
        const context = canvas.getContext("2d");
        const image = context.createImageData(tileSize, tileSize);
        const pixels = image.data;
        const width = Math.ceil(area.ColumnCount / (1 << shift));
        const height = Math.ceil(area.RowCount / (1 << shift));
        const [red, green, blue] = unit.rgb;
        for (let y = 0; y < tileSize && coords.y * tileSize + y < height; ++y) {
            for (let x = 0; x < tileSize && coords.x * tileSize + x < width; ++x) {
                const alpha = alphaOf(unit, coords.x * tileSize + x, coords.y * tileSize + y, shift);
                if (alpha !== 0) {
                    const at = 4 * (y * tileSize + x);
                    pixels[at] = red;
                    pixels[at + 1] = green;
                    pixels[at + 2] = blue;
                    pixels[at + 3] = alpha;
                }
            }
        }
        context.putImageData(image, 0, 0);
    }

    const InkLayer = L.GridLayer.extend({
        createTile: function (coords) {
            const canvas = L.DomUtil.create("canvas", "leaflet-tile");
            canvas.width = canvas.height = tileSize;
            if (coords.x >= 0 && coords.y >= 0) {
                tileDraw(this.options.unit, canvas, coords);
            }
            return canvas;
        },
    });

    const box = $("map").getBoundingClientRect();
    const fit = Math.floor(Math.log2(Math.min(box.width / area.ColumnCount, box.height / area.RowCount)));
    const minZoom = Math.min(fit, 0) - 1;
    const maxZoom = 6;
    const map = L.map("map", {crs: L.CRS.Simple, minZoom: minZoom, maxZoom: maxZoom, zoomSnap: 1, attributionControl: false,
        fadeAnimation: false, zoomAnimation: false, keyboard: true});
    const corner = (row, at) => L.latLng(-row, at);
    const bounds = L.latLngBounds(corner(0, 0), corner(area.RowCount, area.ColumnCount));
    map.createPane("paper").style.zIndex = 150;
    const paper = L.svg({pane: "paper", padding: 1});
    const sheet = (rectangle, color) => L.rectangle(rectangle,
        {pane: "paper", renderer: paper, stroke: false, fillColor: color, fillOpacity: 1, interactive: false}).addTo(map);
    map.setView(bounds.getCenter(), Math.min(fit, 0));
    sheet(bounds, "#f0f0f0");
    sheet(L.latLngBounds(corner(0, -area.FirstColumn), corner(board.Page.Height, pageWidth - area.FirstColumn)), "#ffffff");
    map.getPane("tilePane").style.mixBlendMode = "multiply";

    for (const unit of data.Units) {
        const number = parseInt(unit.Color.slice(1), 16);
        unit.rgb = [number >> 16, (number >> 8) & 255, number & 255];
        unit.layer = new InkLayer({unit: unit, bounds: bounds, noWrap: true, minZoom: minZoom, maxZoom: maxZoom,
            maxNativeZoom: 0, keepBuffer: 1});
        unit.layer.on("add", () => { unit.layer.getContainer().style.mixBlendMode = "multiply"; });
        unit.layer.addTo(map);
    }

    // ---- The inks. ----

    function element(name, text, className) {
        const made = document.createElement(name);
        if (text !== undefined) {
            made.textContent = text;
        }
        if (className) {
            made.className = className;
        }
        return made;
    }

    function chip(unit) {
        const made = element("span", "", "chip");
        made.style.background = unit.Color;
        return made;
    }

    function inkSet(unit, on) {
        unit.box.checked = on;
        if (on) {
            unit.layer.addTo(map);
        } else {
            unit.layer.remove();
        }
        answer();
    }

    for (const unit of data.Units) {
        const line = element("div", undefined, "ink");
        const label = element("label");
        unit.box = element("input");
        unit.box.type = "checkbox";
        unit.box.checked = true;
        unit.box.id = "ink-" + unit.Info.UnitId;
        unit.box.addEventListener("change", () => inkSet(unit, unit.box.checked));
        const only = element("button", "only");
        only.addEventListener("click", () => data.Units.forEach((other) => inkSet(other, other === unit)));
        label.append(unit.box, chip(unit), unit.Text);
        line.append(label, only);
        $("inks").append(line);
    }
    $("all").addEventListener("click", () => data.Units.forEach((unit) => inkSet(unit, true)));
    $("none").addEventListener("click", () => data.Units.forEach((unit) => inkSet(unit, false)));

    // ---- The dot. ----

    let chosen = null; // [row, column]
    let marker = null;

    // What the units whose inks are on do at the chosen dot; those that fire come first.
    function answer() {
        if (chosen === null) {
            return;
        }
        const shown = data.Units.filter((unit) => unit.box.checked)
            .map((unit) => ({unit: unit, dot: dotOf(unit, chosen[0], chosen[1])}));
        shown.sort((a, b) => Number(b.dot.fires) - Number(a.dot.fires));
        $("answer").replaceChildren(...shown.map(({unit, dot}) => {
            const made = element("p", dot.text, dot.wrong ? "wrong" : dot.fires ? "" : "idle");
            made.dataset.unit = unit.Info.UnitId;
            made.style.borderLeftColor = dot.fires ? unit.Color : "#ccc";
            return made;
        }));
        if (shown.length === 0) {
            $("answer").textContent = "No ink is on.";
        }
    }

    function choose(row, column) {
        const at = column - area.FirstColumn;
        if (row < 0 || row >= area.RowCount || at < 0 || at >= area.ColumnCount) {
            return false;
        }
        chosen = [row, column];
        $("row").value = row;
        $("column").value = column;
        if (marker !== null) {
            marker.remove();
        }
        marker = L.rectangle(L.latLngBounds(corner(row, at), corner(row + 1, at + 1)),
            {color: "#ff2020", weight: 2, fill: false, interactive: false}).addTo(map);
        answer();
        return true;
    }

    function placeOf(event) {
        return [Math.floor(-event.latlng.lat), Math.floor(event.latlng.lng) + area.FirstColumn];
    }
    map.on("click", (event) => choose(...placeOf(event)));
    map.on("mousemove", (event) => {
        const [row, column] = placeOf(event);
        $("place").textContent = "row " + row + ", column " + column;
    });
    function show(row, column, zoom) {
        if (choose(row, column)) {
            map.setView(corner(row + 0.5, column - area.FirstColumn + 0.5), zoom);
        }
    }
    $("go").addEventListener("submit", (event) => {
        event.preventDefault();
        show(parseInt($("row").value, 10), parseInt($("column").value, 10), Math.max(map.getZoom(), 4));
    });

    // ---- Words, numbers and plots. ----

    document.title = data.OutputName + " – boardmap report";
    $("title").textContent = data.OutputName;
    $("summary").textContent = data.Summary;
    const judgement = $("judgement");
    judgement.textContent = data.Judgement;
    if (data.Differences.length > 0) {
        judgement.className = "bad";
        for (const [unitId, row, column] of data.Differences) {
            const button = element("button", "unit " + unitId + ", row " + row + ", column " + column);
            button.addEventListener("click", () => show(row, column, 5));
            judgement.append(" ", button);
        }
    }

    const sizes = bits === 2;
    const headings = ["unit", "ink", "", "dots on the page", "coverage"]
        .concat(sizes ? ["small", "middle", "big"] : [], ["dots beside it"]);
    const head = element("tr");
    headings.forEach((text, i) => head.append(element("th", text, i < 3 ? "text" : "")));
    $("ink-use").append(head);
    data.InkUse.forEach((use, i) => {
        const line = element("tr");
        const color = element("td", undefined, "text");
        color.append(chip(data.Units[i]));
        const number = (value) => element("td", value.toLocaleString("en"));
        line.append(element("td", use.UnitId, "text"), element("td", use.Name, "text"), color, number(use.Page.Dots),
            element("td", use.Coverage.toFixed(2) + " %"));
        if (sizes) {
            line.append(number(use.Page.Small), number(use.Page.Middle), number(use.Page.Big));
        }
        line.append(number(use.Beside.Dots));
        $("ink-use").append(line);
    });
    $("stray").textContent = data.Stray;
    $("layout-words").textContent = data.LayoutWords;
    const picture = element("img");
    picture.alt = data.LayoutWords;
    picture.src = URL.createObjectURL(new Blob([data.LayoutSvg], {type: "image/svg+xml"}));
    $("layout-box").append(picture);
    $("job-name").textContent = data.JobName;
    $("job").textContent = data.JobText;

    const graphs = [];
    if (data.Plots.length === 0) {
        $("plots").textContent = "Nothing was recorded. boardmap convert " + data.JobName +
            " --trace FILE records a run; boardmap report with --trace FILE shows it here.";
    }
    data.Plots.forEach((plot, i) => {
        $("plots").append(element("div", plot.Name, "plot-name"));
        const legend = element("div", undefined, "plot-legend");
        const place = element("div", undefined, "plot");
        place.id = "plot-" + i;
        $("plots").append(legend, place);
        graphs.push(new Dygraph(place, plot.Rows, {
            labels: ["s"].concat(plot.Labels),
            stepPlot: plot.Step,
            ylabel: plot.Unit,
            xlabel: "seconds",
            includeZero: true,
            legend: "always",
            labelsDiv: legend,
            strokeWidth: 1.5,
            fillGraph: plot.Labels.length === 1,
        }));
    });

    // For who looks at the report with a program.
    window.boardmapReport = {
        dot: (unitId, row, column) => dotOf(data.Units.find((unit) => unit.Info.UnitId === unitId), row, column),
        show: show,
        map: map,
        graphs: graphs,
        milliseconds: performance.now() - began,
    };
})().catch((error) => {
    document.getElementById("answer").textContent = "This browser cannot show the report: " + error;
    throw error;
});
