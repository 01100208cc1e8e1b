// Asks where a changed template is to be stored. The original is replaced only by a choice of its own.
import { byId, fill, h } from './dom.js';
import { sentence } from './text.js';

/// @param store  ({ file, replace }) → a promise of what was stored; its error is shown, and the user may try again
/// @return what was stored, or null
export function askWhere(row, found, store) {
  const dialog = byId('save');
  const name = h('input', { type: 'text', class: 'wide', id: 'save-name', value: found.copyName, 'aria-describedby': 'save-folder', spellcheck: 'false' });
  const told = h('div', { class: 'told', role: 'alert' });
  const choice = (value, text, checked) => h('label', { class: 'choice' },
    h('input', { type: 'radio', name: 'where', value, checked, onchange: () => { name.disabled = value === 'replace'; } }), text);
  const button = h('button', { type: 'submit', class: 'main' }, 'Save');
  return new Promise((resolve) => {
    let stored = null;
    const form = h('form', { onsubmit: async (event) => {
      event.preventDefault();
      button.disabled = true;
      told.replaceChildren();
      try {
        const replace = form.elements.where.value === 'replace';
        stored = await store({ replace, file: replace ? '' : name.value.trim() });
        dialog.close();
      } catch (error) {
        fill(told, error.message.split('\n').map((line) => h('p', {}, sentence(line))));
      } finally {
        button.disabled = false;
      }
    } },
      h('h2', { id: 'save-title' }, 'Save the changed template'),
      choice('copy', 'As a new file', true),
      h('label', { class: 'unseen', for: 'save-name' }, 'File name'), name,
      h('p', { class: 'hint', id: 'save-folder' }, `in ${found.copyFolder}`),
      found.replaceable ? choice('replace', `Replace the original, ${found.file}`, false) : null,
      told,
      h('div', { class: 'row end' }, h('button', { type: 'button', onclick: () => dialog.close() }, 'Cancel'), button));
    fill(dialog, form);
    dialog.addEventListener('close', () => resolve(stored), { once: true });
    dialog.showModal();
    name.focus();
    name.select();
  });
}
