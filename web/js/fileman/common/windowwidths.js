/* Classes of windows. css/fileman.css uses the same widths. */

/** A compact window: the instrument's own screen, a tablet, a phone. */
export const COMPACT = matchMedia('(max-width: 1000px)');
export const PHONE = matchMedia('(max-width: 640px)');
/** A roomy window: the Refine panel is open until the user closes it. */
export const ROOMY = matchMedia('(min-width: 1200px)');
