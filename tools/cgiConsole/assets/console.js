// Refreshes the live parts of a page every ten seconds. A part keeps its place, so nothing jumps; one that somebody uses
// or has unfolded stays as it is.
(() => {
  'use strict';
  const parts = () => document.querySelectorAll('[data-live]');
  async function refresh() {
    if (document.hidden || parts().length === 0) return;
    const answer = await fetch(location.href, { credentials: 'same-origin' });
    if (!answer.ok) return;
    const fresh = new DOMParser().parseFromString(await answer.text(), 'text/html');
    for (const part of parts()) {
      const next = fresh.querySelector(`[data-live="${part.dataset.live}"]`);
      if (next && next.innerHTML !== part.innerHTML && !part.contains(document.activeElement) &&
          !part.querySelector('details[open]')) {
        part.replaceWith(document.adoptNode(next));
      }
    }
  }
  setInterval(() => refresh().catch(() => {}), 10000);
})();
