// The scenes as buttons.
import { find } from './dom.mjs';

export class Scenes {
  constructor(desk, askName) {
    this.desk = desk;
    this.list = find('scene-list');
    this.saveAs = find('scene-save');
    this.saveAs.addEventListener('click', () => askName(desk.patch.status?.scene ?? ''));
    desk.listen('scenes', () => this.#build());
    desk.listen('status lock link', () => this.#mark());
  }

  #build() {
    const { scenes } = this.desk.patch;
    find('no-scenes').hidden = Boolean(scenes?.length);
    this.saveAs.hidden = scenes === null;
    this.list.replaceChildren(...(scenes ?? []).map((name) => this.#button(name)));
    this.#mark();
  }

  #button(name) {
    const item = document.createElement('li');
    const button = Object.assign(document.createElement('button'), { type: 'button', textContent: name });
    button.dataset.scene = name;
    button.addEventListener('click', () => this.desk.recallScene(name));
    item.append(button);
    return item;
  }

  #mark() {
    const current = this.desk.patch.status?.scene;
    for (const button of this.list.querySelectorAll('button')) {
      button.setAttribute('aria-disabled', !this.desk.mayEdit); // a touch then says why not
      if (button.dataset.scene === current) button.setAttribute('aria-current', 'true');
      else button.removeAttribute('aria-current');
    }
    this.saveAs.disabled = !this.desk.mayEdit;
  }
}
