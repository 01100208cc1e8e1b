// What the page shows is in its address: a reload, a bookmark and the back button find it again.

const kDefaults = { q: '', folder: '', state: '', author: '', sort: 'name', lang: '' };

export function readAddress() {
  const parts = new URLSearchParams(location.hash.slice(1));
  return Object.fromEntries(Object.entries(kDefaults).map(([key, value]) => [key, parts.get(key) ?? value]));
}

/// @param step  true: the back button returns to what was there before
export function writeAddress(state, step = false) {
  const parts = new URLSearchParams();
  for (const [key, value] of Object.entries(state)) {
    if (value !== kDefaults[key]) {
      parts.set(key, value);
    }
  }
  const hash = parts.size === 0 ? '' : `#${parts}`;
  if (hash !== location.hash) {
    history[step ? 'pushState' : 'replaceState'](null, '', hash || location.pathname + location.search);
  }
}
