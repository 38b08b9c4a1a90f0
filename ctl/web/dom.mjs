export function find(id) {
  return document.getElementById(id);
}
