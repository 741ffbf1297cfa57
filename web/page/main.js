// The page: what is chosen goes to the worker, what comes back is shown.
import { drawHistogram } from './histogram.js';
import { colourAt } from './samples.js';
import { Views } from './views.js';

const element = (id) => document.getElementById(id);
const fields = {
    format: element('format'),
    width: element('width'),
    height: element('height'),
    frame: element('frame'),
    skip: element('skip'),
    stride: element('stride'),
    bits: element('bits'),
    bigEndian: element('big-endian'),
};
const look = { balance: element('balance'), red: element('red'), blue: element('blue'), gamma: element('gamma') };

// ---- the worker ----

const worker = new Worker(new URL('./worker.js', import.meta.url), { type: 'module' });
const asked = new Map();
let questions = 0;

function ask(kind, request) {
    return new Promise((resolve, reject) => {
        const id = ++questions;
        asked.set(id, { resolve, reject });
        worker.postMessage({ id, kind, request });
        document.documentElement.dataset.busy = 'yes';
    });
}

worker.onmessage = ({ data: { id, result, error } }) => {
    const { resolve, reject } = asked.get(id);
    asked.delete(id);
    document.documentElement.dataset.busy = asked.size > 0 ? 'yes' : 'no';
    error === undefined ? resolve(result) : reject(new Error(error));
};
worker.onerror = (event) => complain(`The page's worker failed: ${event.message ?? 'it cannot be loaded'}`);

// Runs a task; asked for again while it runs, once more with what is wanted by then.
function coalesced(task) {
    let running = false;
    let again = false;
    return async () => {
        if (running) {
            again = true;
            return;
        }
        running = true;
        do {
            again = false;
            await task().catch((error) => complain(error.message));
        } while (again);
        running = false;
    };
}

// ---- messages ----

function complain(text) {
    element('message').textContent = text;
    element('message').hidden = false;
}

function content() {
    element('message').hidden = true;
    element('views').classList.remove('stale');
}

const count = (number, thing) => `${number.toLocaleString('en')} ${thing}${number === 1 ? '' : 's'}`;

// ---- a file ----

let about; // formats and algorithms, from the library
let views;
let file; // its name, length, and what it is read as by
let frame; // what the worker said of the last one

async function open(name, blob) {
    content();
    try {
        const opened = await ask('open', { name, blob });
        file = { name, ...opened };
        element('reading').hidden = false;
        showAnswers(opened.by === 'bytes' ? opened.answers : undefined);
        if (opened.answers.length > 0) {
            await take(opened.answers[0]);
            return;
        }
        element('looking').hidden = true;
        element('about').textContent = `${name}, ${count(opened.length, 'byte')}`;
        complain(
            `Nothing in ${name} looks like rows of samples, and its name does not say size and format, as ` +
                'scene_1280x960_BayerRG12Packed.raw does. If you know them, enter them.',
        );
    } catch (error) {
        complain(error.message);
    }
}

function take(answer) {
    for (const name of ['format', 'width', 'height', 'skip']) {
        fields[name].value = answer[name];
    }
    fields.stride.value = answer.stride || '';
    fields.bits.value = answer.bits || '';
    fields.bigEndian.checked = answer.bigEndian;
    fields.frame.value = 1;
    element('more').open = Boolean(answer.skip || answer.stride || answer.bigEndian);
    return convert();
}

function showAnswers(answers) {
    element('meanings').hidden = false;
    element('meanings').open = false;
    const list = element('answers');
    list.replaceChildren();
    for (const answer of answers ?? []) {
        const button = document.createElement('button');
        button.type = 'button';
        const { format, width, height, certainty, reasons } = answer;
        button.append(`${width}x${height} ${format} (${certainty})`);
        const why = document.createElement('small');
        why.textContent = reasons.join('; ');
        button.append(why);
        button.addEventListener('click', () => take(answer));
        const item = document.createElement('li');
        item.append(button);
        list.append(item);
    }
    list.dataset.asked = answers ? 'yes' : '';
}

// The bytes are asked when somebody wants to know.
element('meanings').addEventListener('toggle', async () => {
    if (element('meanings').open && !element('answers').dataset.asked) {
        element('answers').textContent = 'Reading the bytes …';
        showAnswers(await ask('others'));
        element('meanings').open = true;
        if (element('answers').childElementCount === 0) {
            element('answers').textContent = 'Nothing in its bytes looks like rows of samples.';
        }
    }
});

// ---- reading it ----

// Null, with a message, where a field holds none of what it may.
function readingNow() {
    const wrong = Object.values(fields).find((field) => !field.checkValidity());
    for (const field of Object.values(fields)) {
        field.classList.toggle('wrong', field === wrong);
    }
    if (wrong) {
        const label = wrong.labels[0].firstChild.textContent.trim();
        complain(`${label}: ${wrong.validationMessage}`);
        return null;
    }
    const number = (field) => Number(field.value);
    return {
        format: fields.format.value,
        width: number(fields.width),
        height: number(fields.height),
        skip: number(fields.skip),
        stride: number(fields.stride),
        bits: number(fields.bits),
        bigEndian: fields.bigEndian.checked,
        frame: number(fields.frame),
    };
}

const convert = coalesced(async () => {
    element('views').classList.add('stale');
    const reading = readingNow();
    if (reading === null) {
        return;
    }
    frame = { ...(await ask('convert', reading)), format: about.formats.find(({ name }) => name === reading.format) };
    content();
    element('looking').hidden = false;
    element('views').style.setProperty('--aspect', frame.width / frame.height);
    element('frame-field').hidden = frame.frames === 1;
    sayWhatItIs(reading);
    await lookAgain();
    sayTimes();
    drawCounts();
});

function sayWhatItIs({ format, width, height }) {
    const parts = [file.name, count(file.length, 'byte'), `${width}x${height} ${format}`];
    if (frame.frames > 1) {
        parts.push(`${frame.frames} frames`);
    }
    if (frame.rest > 0) {
        parts.push(`${count(frame.rest, 'byte')} left over`);
    }
    element('about').textContent = parts.join(' · ');
    element('bits').disabled = !frame.format.inWords;
    element('big-endian').disabled = !frame.format.inWords;
    element('bits').placeholder = frame.bits;
}

function sayTimes() {
    const megapixels = (frame.width * frame.height) / 1e6;
    const texts = Object.entries(frame.times).map(([algorithm, time]) => {
        const speed = Math.round((megapixels / time) * 1000).toLocaleString('en');
        return [algorithm, `${time.toFixed(2)} ms, ${speed} Mpixel/s`];
    });
    views.times(Object.fromEntries(texts));
}

for (const field of Object.values(fields)) {
    field.addEventListener('input', () => file && convert());
}
element('reading').addEventListener('submit', (event) => event.preventDefault());

// ---- looking ----

const lookAgain = coalesced(async () => {
    const { bitmaps, gains } = await ask('look', {
        balance: look.balance.value,
        red: Number(look.red.value),
        blue: Number(look.blue.value),
        gamma: Number(look.gamma.value),
    });
    if (look.balance.value !== 'hand') {
        look.red.value = gains[0];
        look.blue.value = gains[2];
    }
    sayLook();
    views.show(bitmaps, frame.width, frame.height);
});

function sayLook() {
    for (const output of element('look').querySelectorAll('output')) {
        output.value = Number(element(output.htmlFor.value).value).toFixed(2);
    }
}

for (const control of Object.values(look)) {
    control.addEventListener('input', () => {
        if (control === look.red || control === look.blue) {
            look.balance.value = 'hand';
        }
        sayLook();
        lookAgain();
    });
}
element('as-converted').addEventListener('click', () => {
    look.balance.value = 'none';
    look.gamma.value = 1;
    lookAgain();
});

function drawCounts() {
    const canvas = element('histogram');
    const { counts, format } = frame;
    const isGrey = format.sites === '';
    drawHistogram(canvas, counts, isGrey, element('logarithmic').checked);
    element('range').textContent = `${counts.least} to ${counts.most}, shown from 0 to ${2 ** counts.bits - 1}`;
    const [red, green, blue] = counts.means.map((mean) => mean.toFixed(1));
    const means = isGrey ? `mean ${green}` : `means of red ${red}, green ${green}, blue ${blue}`;
    canvas.setAttribute('aria-label', `Histogram of the samples, ${counts.least} to ${counts.most}, ${means}`);
}
element('logarithmic').addEventListener('input', drawCounts);
for (const change of [
    [window, 'resize'],
    [matchMedia('(prefers-color-scheme: dark)'), 'change'],
]) {
    change[0].addEventListener(change[1], () => frame && drawCounts());
}

// ---- a pixel ----

let pointed;
const readPixel = coalesced(async () => {
    const { x, y, sample, values } = await ask('pixel', pointed);
    const colour = ['red', 'green', 'blue'][colourAt(frame.format, x, y)] ?? 'grey';
    element('pixel').textContent = `column ${x}, row ${y}: ${colour} sample ${sample}`;
    const body = element('values').tBodies[0];
    body.replaceChildren(...values.map((value, i) => rowOf(about.algorithms[i], value)));
    element('values').hidden = false;
});

function rowOf(algorithm, value) {
    const row = document.createElement('tr');
    const head = document.createElement('th');
    head.scope = 'row';
    const swatch = document.createElement('span');
    swatch.className = 'swatch';
    swatch.style.background = `rgb(${value})`;
    head.append(swatch, algorithm);
    row.append(
        head,
        ...value.map((part) => {
            const cell = document.createElement('td');
            cell.textContent = part;
            return cell;
        }),
    );
    return row;
}

// ---- a picture as a file ----

async function download(algorithm) {
    const canvas = document.createElement('canvas');
    Object.assign(canvas, { width: frame.width, height: frame.height });
    canvas.getContext('2d').drawImage(views.bitmap(algorithm), 0, 0);
    const blob = await new Promise((done) => canvas.toBlob(done, 'image/png'));
    if (blob === null) {
        complain(`No memory for a PNG file of ${frame.width}x${frame.height}`);
        return;
    }
    const link = document.createElement('a');
    link.href = URL.createObjectURL(blob);
    link.download = `${file.name.replace(/\.[^.]*$/, '')}-${algorithm}.png`;
    link.click();
    setTimeout(() => URL.revokeObjectURL(link.href), 60000);
}

// ---- choosing ----

element('file').addEventListener('change', ({ target }) => {
    if (target.files.length > 0) {
        open(target.files[0].name, target.files[0]);
        target.value = ''; // so that the same file can be chosen again
    }
});
for (const kind of ['dragenter', 'dragover', 'dragleave', 'drop']) {
    document.addEventListener(kind, (event) => {
        event.preventDefault();
        document.body.classList.toggle('dropping', kind === 'dragover' || kind === 'dragenter');
        const dropped = kind === 'drop' ? event.dataTransfer.files[0] : undefined;
        if (dropped) {
            open(dropped.name, dropped);
        } else if (kind === 'drop') {
            complain('What was dropped is no file');
        }
    });
}

async function offerDemos() {
    const response = await fetch('frames/frames.json').catch(() => undefined);
    for (const { file: name, label } of response?.ok ? await response.json() : []) {
        const button = document.createElement('button');
        button.type = 'button';
        button.textContent = label;
        button.addEventListener('click', async () => {
            const frameFile = await fetch(`frames/${name}`);
            frameFile.ok
                ? open(name, await frameFile.blob())
                : complain(`frames/${name} is not there: ${frameFile.status}`);
        });
        element('demos').append(button);
    }
}

function offerFormats() {
    const groups = new Map();
    for (const { name, sites } of about.formats) {
        const label = sites === '' ? 'Grey' : `Mosaics that begin with ${sites}`;
        groups.set(label, [...(groups.get(label) ?? []), name]);
    }
    for (const [label, names] of groups) {
        const group = document.createElement('optgroup');
        group.label = label;
        group.append(...names.map((name) => new Option(name)));
        fields.format.append(group);
    }
}

async function begin() {
    about = await ask('about');
    offerFormats();
    const named =
        about.instructionSet === 'scalar'
            ? 'without vectors, which this browser lacks'
            : `with ${about.instructionSet}`;
    element('engine').textContent = `WebAssembly ${named}`;
    views = new Views(element('views'), element('view'), about.algorithms, {
        point: (pixel) => {
            pointed = pixel;
            readPixel();
        },
        scaled: (scale) => {
            element('scale').value =
                scale > 0.995 ? `${Number(scale.toFixed(2))}:1` : `${(100 * scale).toFixed(0)} %`;
        },
        png: download,
    });
    element('zoom-in').addEventListener('click', () => views.larger());
    element('zoom-out').addEventListener('click', () => views.smaller());
    element('fit').addEventListener('click', () => views.fit());
    element('one').addEventListener('click', () => views.zoomTo(1));
    element('eight').addEventListener('click', () => views.zoomTo(8));
    await offerDemos();
    document.documentElement.dataset.ready = 'yes';
}

begin().catch((error) => complain(`The page cannot start: ${error.message}`));
