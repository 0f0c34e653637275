// The options page's one switch, kept where the toolbar button keeps it too.
'use strict';

const api = globalThis.browser ?? globalThis.chrome;
const box = document.getElementById('capture');

async function show() {
  box.checked = (await api.storage.local.get('capture')).capture === true;
}

box.addEventListener('change', () => api.storage.local.set({ capture: box.checked }));
api.storage.onChanged.addListener((changes) => {
  if ('capture' in changes) show();
});
show();
