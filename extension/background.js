// Hands links, pages and, when asked, the browser's own downloads to Corvane through its native
// host ("corvane --native-host"). Chromium runs this file as a service worker, Firefox as an event
// page; both offer the same calls with promises.
'use strict';

const api = globalThis.browser ?? globalThis.chrome;
const HOST = 'corvane';
const MENU_LINK = 'corvane-enlace';
const MENU_PAGE = 'corvane-pagina';
const WEB = ['http://*/*', 'https://*/*'];

const isWebAddress = (url) => /^https?:\/\//.test(url ?? '');
const isDownloadable = (url) => /^(https?|ftp):\/\//.test(url ?? '');

// The Cookie header the browser itself would send for `url`.
async function cookieHeader(url) {
  if (!isWebAddress(url)) return '';
  try {
    const cookies = await api.cookies.getAll({ url });
    return cookies.map((cookie) => `${cookie.name}=${cookie.value}`).join('; ');
  } catch (error) {
    // E.g. with first-party isolation the address alone does not name the cookies: go without.
    return '';
  }
}

async function ask(message) {
  let answer;
  try {
    answer = await api.runtime.sendNativeMessage(HOST, message);
  } catch (error) {
    answer = { ok: false, error: `No se puede hablar con Corvane (¿está instalado?): ${error.message}` };
  }
  if (!answer?.ok) {
    const text = answer?.error ?? 'Corvane no ha contestado.';
    await api.action.setBadgeBackgroundColor({ color: '#b00020' });
    await api.action.setBadgeText({ text: '!' });
    await api.action.setTitle({ title: `Corvane: ${text}` });
    return { ok: false, error: text };
  }
  await showCapture();
  return answer;
}

// "Descargar con Corvane": the address, the page it came from and the address's cookies.
async function handOver(url, referrer) {
  const message = { action: 'add', url };
  if (isWebAddress(referrer)) message.referrer = referrer;
  const cookie = await cookieHeader(url);
  if (cookie) message.cookie = cookie;
  return ask(message);
}

// "Descargar todos los enlaces con Corvane": the page goes to Corvane's link grabber.
async function grabPage(url) {
  return ask({ action: 'grab', url });
}

async function makeMenus() {
  await api.contextMenus.removeAll();
  api.contextMenus.create({
    id: MENU_LINK,
    title: 'Descargar con Corvane',
    contexts: ['link', 'image', 'audio', 'video'],
    targetUrlPatterns: [...WEB, 'ftp://*/*'],
  });
  api.contextMenus.create({
    id: MENU_PAGE,
    title: 'Descargar todos los enlaces con Corvane',
    contexts: ['page'],
    documentUrlPatterns: WEB,
  });
}

api.contextMenus.onClicked.addListener((info) => {
  if (info.menuItemId === MENU_PAGE) grabPage(info.pageUrl);
  else if (info.menuItemId === MENU_LINK)
    handOver(info.linkUrl ?? info.srcUrl, info.frameUrl ?? info.pageUrl);
});

// Capturing: the toolbar button and the options page switch it; the button shows its state.
async function capturing() {
  return (await api.storage.local.get('capture')).capture === true;
}

async function showCapture() {
  const on = await capturing();
  await api.action.setBadgeBackgroundColor({ color: '#2e7d32' });
  await api.action.setBadgeText({ text: on ? 'sí' : '' });
  await api.action.setTitle({
    title: `Corvane: capturar descargas (${on ? 'activado' : 'desactivado'})`,
  });
}

api.action.onClicked.addListener(async () => {
  await api.storage.local.set({ capture: !(await capturing()) });
});
api.storage.onChanged.addListener((changes) => {
  if ('capture' in changes) showCapture();
});
api.runtime.onInstalled.addListener(() => {
  makeMenus();
  showCapture();
});
api.runtime.onStartup.addListener(showCapture);

// The endings of Corvane's link grabber, asked once per waking.
let endings = null;
async function programEndings() {
  if (!endings) {
    const answer = await ask({ action: 'extensions' });
    if (!answer.ok) return [];
    endings = answer.extensions.filter((ending) => ending).map((ending) => ending.toLowerCase());
  }
  return endings;
}

function fileNameOf(item) {
  const path = item.filename || new URL(item.finalUrl || item.url).pathname;
  const name = path.split(/[\\/]/).pop();
  try {
    return decodeURIComponent(name);
  } catch (error) {
    return name;
  }
}

// Addresses Corvane could not take, given back to the browser: not captured a second time.
const givenBack = new Set();

api.downloads.onCreated.addListener(async (item) => {
  const url = item.finalUrl || item.url;
  if (!isDownloadable(url) || givenBack.delete(url) || !(await capturing())) return;
  const name = fileNameOf(item).toLowerCase();
  if (!(await programEndings()).some((ending) => name.endsWith(ending))) return;
  await api.downloads.cancel(item.id).catch(() => {});
  await api.downloads.erase({ id: item.id }).catch(() => {});
  const answer = await handOver(url, item.referrer);
  if (!answer.ok) {
    // The person asked for the file: the browser fetches it after all.
    givenBack.add(url);
    await api.downloads.download({ url });
  }
});
