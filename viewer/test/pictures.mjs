/**
 * Runs in a browser: compares two PNG pictures of one size, given in base64. Returns how many pixels
 * differ, and of the first picture the number of colours, the share of the commonest one, and the
 * colour of its first pixel.
 */
export async function comparePictures([one, other]) {
  const pixelsOf = async (png) => {
    const image = new Image();
    image.src = `data:image/png;base64,${png}`;
    await image.decode();
    const canvas = new OffscreenCanvas(image.width, image.height);
    const context = canvas.getContext("2d");
    context.drawImage(image, 0, 0);
    return new Uint32Array(context.getImageData(0, 0, image.width, image.height).data.buffer);
  };
  const first = await pixelsOf(one);
  const second = await pixelsOf(other);
  let differing = Math.abs(first.length - second.length);
  const numbers = new Map();
  first.forEach((pixel, i) => {
    differing += i < second.length && pixel !== second[i] ? 1 : 0;
    numbers.set(pixel, (numbers.get(pixel) ?? 0) + 1);
  });
  const commonest = Math.max(...numbers.values()) / first.length;
  return { differing, colours: numbers.size, commonest, first: first[0] };
}
