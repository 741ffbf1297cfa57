// The pictures side by side: one magnification, one place and one pointed pixel for all of them.

const mostScale = 64;
const step = Math.SQRT2;
const tapDistance = 6;

export class Views {
    #views;
    #listeners;
    #size = { width: 0, height: 0 };
    #scale = 1; // of the page's pixels to the picture's
    #centre = { x: 0, y: 0 };
    #fitted = true;
    #pixel;
    #pointers = new Map();
    #waiting = false;

    /** `listeners`: point({x, y}), scaled(scale), png(algorithm). */
    constructor(container, template, algorithms, listeners) {
        this.#listeners = listeners;
        this.#views = algorithms.map((algorithm) => {
            const figure = template.content.firstElementChild.cloneNode(true);
            const view = {
                algorithm,
                figure,
                canvas: figure.querySelector('canvas'),
                time: figure.querySelector('.time'),
            };
            figure.querySelector('.name').textContent = algorithm;
            const png = figure.querySelector('.png');
            png.setAttribute('aria-label', `Download the ${algorithm} picture as PNG`);
            png.addEventListener('click', () => listeners.png(algorithm));
            this.#listen(view.canvas);
            container.append(figure);
            return view;
        });
        new ResizeObserver(() => this.#resized()).observe(container);
    }

    /** Of another size than the last ones, pictures are fitted; otherwise the place stays. */
    show(bitmaps, width, height) {
        for (const view of this.#views) {
            view.bitmap?.close();
            view.bitmap = bitmaps[view.algorithm];
            view.canvas.setAttribute(
                'aria-label',
                `${view.algorithm}, ${width} by ${height} pixels; arrows move the pixel, plus and minus magnify`,
            );
        }
        if (width !== this.#size.width || height !== this.#size.height) {
            this.#size = { width, height };
            this.#pixel = undefined;
            this.fit();
        }
        this.#draw();
    }

    bitmap(algorithm) {
        return this.#views.find((view) => view.algorithm === algorithm).bitmap;
    }

    times(texts) {
        for (const view of this.#views) {
            view.time.textContent = texts[view.algorithm];
        }
    }

    fit() {
        this.#fitted = true;
        this.#centre = { x: this.#size.width / 2, y: this.#size.height / 2 };
        this.#setScale(this.#fitScale());
    }

    /** Magnifies about the middle, or about the pointed pixel if that is to be seen. */
    zoomTo(scale) {
        this.#zoom(scale / this.#scale, this.#middle());
    }

    larger() {
        this.#zoom(step, this.#middle());
    }

    smaller() {
        this.#zoom(1 / step, this.#middle());
    }

    // ---- where things are ----

    #canvasSize() {
        const { clientWidth, clientHeight } = this.#views[0].canvas;
        return { width: clientWidth || 1, height: clientHeight || 1 };
    }

    #fitScale() {
        const { width, height } = this.#canvasSize();
        return Math.min(width / this.#size.width, height / this.#size.height, mostScale);
    }

    #middle() {
        const { width, height } = this.#canvasSize();
        const at = this.#pixel && this.#toCanvas({ x: this.#pixel.x + 0.5, y: this.#pixel.y + 0.5 });
        const isSeen = at && at.x >= 0 && at.y >= 0 && at.x <= width && at.y <= height;
        return isSeen ? at : { x: width / 2, y: height / 2 };
    }

    #toCanvas({ x, y }) {
        const { width, height } = this.#canvasSize();
        return {
            x: (x - this.#centre.x) * this.#scale + width / 2,
            y: (y - this.#centre.y) * this.#scale + height / 2,
        };
    }

    #toPicture({ x, y }) {
        const { width, height } = this.#canvasSize();
        return {
            x: (x - width / 2) / this.#scale + this.#centre.x,
            y: (y - height / 2) / this.#scale + this.#centre.y,
        };
    }

    // ---- how they change ----

    #resized() {
        if (this.#size.width > 0) {
            this.#fitted ? this.fit() : this.#draw();
        }
    }

    #setScale(scale) {
        this.#scale = scale;
        for (const { canvas } of this.#views) {
            canvas.classList.toggle('magnified', !this.#fitted);
        }
        this.#listeners.scaled(scale);
        this.#draw();
    }

    #zoom(factor, about) {
        if (this.#size.width === 0) {
            return;
        }
        const before = this.#toPicture(about);
        this.#fitted = false;
        const least = Math.min(1, this.#fitScale()) / 2;
        this.#setScale(Math.min(mostScale, Math.max(least, this.#scale * factor)));
        const after = this.#toPicture(about);
        this.#moveBy(before.x - after.x, before.y - after.y);
    }

    // In pixels of the picture; its middle stays over the picture.
    #moveBy(x, y) {
        this.#centre = {
            x: Math.min(this.#size.width, Math.max(0, this.#centre.x + x)),
            y: Math.min(this.#size.height, Math.max(0, this.#centre.y + y)),
        };
        this.#draw();
    }

    #point({ x, y }) {
        const pixel = { x: Math.floor(x), y: Math.floor(y) };
        const inside = pixel.x >= 0 && pixel.y >= 0 && pixel.x < this.#size.width && pixel.y < this.#size.height;
        if (!inside || (pixel.x === this.#pixel?.x && pixel.y === this.#pixel?.y)) {
            return;
        }
        this.#pixel = pixel;
        this.#listeners.point(pixel);
        this.#draw();
    }

    // ---- hands ----

    #listen(canvas) {
        canvas.addEventListener(
            'wheel',
            (event) => {
                event.preventDefault();
                this.#zoom(Math.exp(-event.deltaY * (event.deltaMode === 1 ? 0.05 : 0.002)), placeOf(event));
            },
            { passive: false },
        );
        canvas.addEventListener('pointerdown', (event) => {
            canvas.setPointerCapture(event.pointerId);
            this.#pointers.set(event.pointerId, { ...placeOf(event), moved: 0 });
        });
        canvas.addEventListener('pointermove', (event) => this.#pointerMoved(event));
        canvas.addEventListener('pointerup', (event) => {
            if (this.#pointers.get(event.pointerId)?.moved < tapDistance) {
                this.#point(this.#toPicture(placeOf(event)));
            }
            this.#pointers.delete(event.pointerId);
        });
        canvas.addEventListener('pointercancel', (event) => this.#pointers.delete(event.pointerId));
        canvas.addEventListener('dblclick', (event) => this.#zoom(step * step, placeOf(event)));
        canvas.addEventListener('keydown', (event) => this.#keyPressed(event));
    }

    #pointerMoved(event) {
        const last = this.#pointers.get(event.pointerId);
        const now = placeOf(event);
        if (last === undefined) {
            this.#point(this.#toPicture(now));
            return;
        }
        const [a, b] = this.#pointers.values();
        const apart = () => Math.hypot(a.x - b.x, a.y - b.y);
        const before = b === undefined ? 0 : apart();
        const move = { x: now.x - last.x, y: now.y - last.y };
        last.moved += Math.hypot(move.x, move.y);
        Object.assign(last, now);
        if (b === undefined) {
            this.#moveBy(-move.x / this.#scale, -move.y / this.#scale);
            this.#fitted = false;
        } else {
            this.#moveBy(-move.x / 2 / this.#scale, -move.y / 2 / this.#scale);
            this.#zoom(apart() / (before || 1), { x: (a.x + b.x) / 2, y: (a.y + b.y) / 2 });
        }
    }

    #keyPressed(event) {
        const far = event.shiftKey ? 10 : 1;
        const moves = { ArrowLeft: [-far, 0], ArrowRight: [far, 0], ArrowUp: [0, -far], ArrowDown: [0, far] };
        const keys = {
            '+': () => this.larger(),
            '=': () => this.larger(),
            '-': () => this.smaller(),
            0: () => this.fit(),
            1: () => this.zoomTo(1),
        };
        if (event.ctrlKey || event.metaKey || event.altKey || !(event.key in moves || event.key in keys)) {
            return;
        }
        event.preventDefault();
        event.key in moves ? this.#step(...moves[event.key]) : keys[event.key]();
    }

    #step(x, y) {
        const { width, height } = this.#size;
        const from = this.#pixel ?? { x: Math.floor(this.#centre.x), y: Math.floor(this.#centre.y) };
        const to = {
            x: Math.min(width - 1, Math.max(0, from.x + x)),
            y: Math.min(height - 1, Math.max(0, from.y + y)),
        };
        this.#point(to);
        const at = this.#toCanvas({ x: to.x + 0.5, y: to.y + 0.5 });
        const size = this.#canvasSize();
        if (at.x < 0 || at.y < 0 || at.x > size.width || at.y > size.height) {
            this.#moveBy(to.x + 0.5 - this.#centre.x, to.y + 0.5 - this.#centre.y);
        }
    }

    // ---- drawing ----

    #draw() {
        if (!this.#waiting) {
            this.#waiting = true;
            requestAnimationFrame(() => {
                this.#waiting = false;
                this.#views.forEach((view) => this.#drawView(view));
            });
        }
    }

    #drawView({ canvas, bitmap }) {
        const ratio = window.devicePixelRatio || 1;
        const width = Math.round(canvas.clientWidth * ratio);
        const height = Math.round(canvas.clientHeight * ratio);
        if (canvas.width !== width || canvas.height !== height) {
            Object.assign(canvas, { width, height });
        }
        const context = canvas.getContext('2d');
        context.clearRect(0, 0, width, height);
        if (!bitmap) {
            return;
        }
        const origin = this.#toCanvas({ x: 0, y: 0 });
        const scale = this.#scale * ratio;
        context.imageSmoothingEnabled = scale < 1;
        context.imageSmoothingQuality = 'medium';
        context.drawImage(
            bitmap,
            Math.round(origin.x * ratio),
            Math.round(origin.y * ratio),
            Math.round(this.#size.width * scale),
            Math.round(this.#size.height * scale),
        );
        if (this.#pixel) {
            drawMark(
                context,
                { x: origin.x * ratio + this.#pixel.x * scale, y: origin.y * ratio + this.#pixel.y * scale },
                scale,
            );
        }
    }
}

function placeOf(event) {
    const box = event.currentTarget.getBoundingClientRect();
    return { x: event.clientX - box.left, y: event.clientY - box.top };
}

// A frame around the pixel, seen on any ground.
function drawMark(context, { x, y }, scale) {
    const room = Math.max(scale, 8);
    const shift = (room - scale) / 2;
    for (const [colour, line] of [
        ['#000', 4],
        ['#fff', 2],
    ]) {
        context.strokeStyle = colour;
        context.lineWidth = line;
        context.strokeRect(x - shift - 2, y - shift - 2, room + 4, room + 4);
    }
}
