// Elements are made here alone: texts of templates go in as text nodes and are never read as markup.

const present = (children) => children.flat(Infinity).filter((child) => child !== null && child !== undefined && child !== false);

/// An element with attributes, properties and listeners: `h('button', {class: 'x', onclick: f}, 'Save')`.
/// Children may be lists; one that is null or false is left out.
export function h(tag, attributes = {}, ...children) {
  const element = document.createElement(tag);
  for (const [name, value] of Object.entries(attributes)) {
    if (name.startsWith('on')) {
      element.addEventListener(name.slice(2), value);
    } else if (name in element && typeof value !== 'string') {
      element[name] = value;
    } else if (value !== null && value !== undefined) {
      element.setAttribute(name, value);
    }
  }
  element.append(...present(children));
  return element;
}

export const byId = (id) => document.getElementById(id);

/// Replaces what an element holds.
export function fill(element, ...children) {
  element.replaceChildren(...present(children));
  return element;
}

/// Ends what pictures and videos still load. Browsers have few connections to a server, and go on loading for elements
/// that have left the document.
export function endLoading(media) {
  for (const one of media) {
    one.removeAttribute('src');
    one.load?.();
  }
}

/// Calls `f` once things have been quiet for `ms`.
export function debounced(f, ms) {
  let timer = 0;
  return (...values) => {
    clearTimeout(timer);
    timer = setTimeout(() => f(...values), ms);
  };
}
