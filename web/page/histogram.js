// The histogram of the raw samples, a line for each colour of sites.

const colourNames = ['--red', '--green', '--blue'];

export function drawHistogram(canvas, counts, isGrey, logarithmic) {
    const ratio = window.devicePixelRatio || 1;
    const width = Math.max(1, Math.round(canvas.clientWidth * ratio));
    const height = Math.max(1, Math.round(canvas.clientHeight * ratio));
    Object.assign(canvas, { width, height });
    const context = canvas.getContext('2d');
    const style = getComputedStyle(canvas);
    const shown = isGrey ? [counts.histograms[1]] : counts.histograms;
    const level = (count) => (logarithmic ? Math.log1p(count) : count);
    const most = level(Math.max(1, ...shown.map((histogram) => Math.max(...histogram))));
    context.strokeStyle = style.getPropertyValue('--line');
    context.strokeRect(0.5, 0.5, width - 1, height - 1);
    shown.forEach((histogram, i) => {
        context.strokeStyle = style.getPropertyValue(isGrey ? '--grey' : colourNames[i]);
        context.fillStyle = context.strokeStyle;
        drawSteps(
            context,
            histogram,
            width,
            (count) => height - (level(count) / most) * (height - 4 * ratio),
            height,
            ratio,
        );
    });
}

function drawSteps(context, histogram, width, top, bottom, ratio) {
    context.lineWidth = 1.5 * ratio;
    context.beginPath();
    context.moveTo(0, bottom);
    histogram.forEach((count, i) => {
        context.lineTo((i * width) / histogram.length, top(count));
        context.lineTo(((i + 1) * width) / histogram.length, top(count));
    });
    context.lineTo(width, bottom);
    context.globalAlpha = 0.18;
    context.fill();
    context.globalAlpha = 1;
    context.stroke();
}
