// What other scripts of the page give.

declare global {
  const uPlot: any;
}
export {};
